#pragma once

#include "core/selection/SelectionDesktop.h"

#include <QList>
#include <QStringList>
#include <optional>

namespace scrivel::test {

// A desktop driven by the test: it shows the scene it is given, leaves each
// read of the selection open until the test answers it (or never does),
// and records what would have happened to the other window.
class FakeSelectionDesktop : public SelectionDesktop {
public:
    SelectionScene scene() override {
        ++sceneReads;
        return currentScene;
    }
    Future<PrimarySelection> readPrimary(qsizetype byteLimit) override {
        readLimits.append(byteLimit);
        m_reads.append(Promise<PrimarySelection>());
        return m_reads.last().future();
    }
    bool isAlive(const DesktopWindow& window) override { return !gone.contains(window.id); }
    QStringList windowClass(const DesktopWindow&) override { return currentClass; }
    void activate(const DesktopWindow& window) override { activated.append(window.id); }
    bool hasFocus(const DesktopWindow& window) override {
        ++focusChecks;
        return takesFocusAfterChecks && activated.contains(window.id) &&
               focusChecks >= *takesFocusAfterChecks;
    }
    void typePaste(PasteKeys keys) override { typed.append(keys); }

    // Answers the latest read; false when there is none open.
    bool answer(const PrimarySelection& selection) {
        if (m_reads.isEmpty())
            return false;
        m_reads.last().resolve(selection);
        return true;
    }
    bool latestReadCancelled() const { return !m_reads.isEmpty() && m_reads.last().isCancelled(); }
    int readCount() const { return int(m_reads.size()); }

    // A focused window that owns the selection itself.
    static SelectionScene selectionInFocusedWindow() {
        const DesktopWindow window{0x400005, 0x200010, true, 0x400000};
        return {window, window};
    }

    SelectionScene currentScene = selectionInFocusedWindow();
    QStringList currentClass{QStringLiteral("gedit"), QStringLiteral("Gedit")};
    QList<quint32> gone;
    // The window gets the focus at this check after being activated;
    // nothing means never.
    std::optional<int> takesFocusAfterChecks = 2;

    int sceneReads = 0;
    QList<qsizetype> readLimits;
    QList<quint32> activated;
    int focusChecks = 0;
    QList<PasteKeys> typed;

private:
    QList<Promise<PrimarySelection>> m_reads;
};

} // namespace scrivel::test
