#!/usr/bin/env python3
"""A small Tk text window: another application's text field for the desktop tests.

    tk_text_window.py TITLE TEXT_FILE [GEOMETRY [ANSWER_AFTER_MS]]

It opens a window titled TITLE with the contents of TEXT_FILE in a Text
widget that has the keyboard focus, and writes the widget's contents back to
TEXT_FILE (atomically) whenever they change, so a test can read what a user
would see.

Paste (Ctrl+V) replaces the selected text, as text fields in GTK and Qt do;
Tk's own X11 binding would insert beside it.

With ANSWER_AFTER_MS, the window stands for a hung application: asked for
its selection, it stops (answering nothing, not even redrawing) for that
long before it gives the text, and then leaves TEXT_FILE.answered beside
TEXT_FILE.
"""
import os
import sys
import time
import tkinter


def main() -> int:
    title, path = sys.argv[1], sys.argv[2]
    geometry = sys.argv[3] if len(sys.argv) > 3 else "420x160+40+60"
    answer_after_ms = int(sys.argv[4]) if len(sys.argv) > 4 else 0
    with open(path, encoding="utf-8") as f:
        initial = f.read()

    root = tkinter.Tk(className="ScrivelTestEditor")
    root.title(title)
    root.geometry(geometry)
    text = tkinter.Text(root, undo=True, wrap="word")
    text.pack(fill="both", expand=True)
    text.insert("1.0", initial)
    text.mark_set("insert", "end-1c")
    text.focus_set()

    def paste(event):
        widget = event.widget
        try:
            pasted = widget.clipboard_get()
        except tkinter.TclError:
            return "break"
        if widget.tag_ranges("sel"):
            widget.delete("sel.first", "sel.last")
        widget.insert("insert", pasted)
        return "break"

    text.bind("<<Paste>>", paste)

    if answer_after_ms:
        def answered():
            root.winfo_pointerxy()  # a round trip: the server has the answer
            open(path + ".answered", "w", encoding="utf-8").close()

        def answer(offset, max_chars):
            time.sleep(answer_after_ms / 1000)
            root.after_idle(answered)
            selected = text.get("sel.first", "sel.last") if text.tag_ranges("sel") else ""
            return selected[int(offset):int(offset) + int(max_chars)]

        for kind in ("UTF8_STRING", "STRING"):
            root.tk.call("selection", "handle", "-selection", "PRIMARY", "-type", kind,
                         text._w, root.register(answer))

    shown = [initial]

    def mirror():
        current = text.get("1.0", "end-1c")
        if current != shown[0]:
            shown[0] = current
            with open(path + ".tmp", "w", encoding="utf-8") as f:
                f.write(current)
            os.replace(path + ".tmp", path)
        root.after(40, mirror)

    root.after(40, mirror)
    root.mainloop()
    return 0


if __name__ == "__main__":
    sys.exit(main())
