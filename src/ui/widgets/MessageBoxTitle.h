#pragma once

class QMessageBox;

namespace scrivel {

// Widens a message box so that its window title is shown whole. Qt sizes a
// message box for its text and allows only a little for the title; a
// window manager that puts an icon and three buttons beside it then cuts a
// short title in the middle ("Remov…API Key"). Call it once the box is set
// up, just before it is shown.
void makeRoomForTitle(QMessageBox& box);

} // namespace scrivel
