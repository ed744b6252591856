#pragma once

namespace corvane {

// Posts WM_COMMAND with this message id and adapter index to the tray application's window. False
// when there is none, or when it can't be posted. Any thread may call; it does not wait.
bool PostMsgToTrayApp(int msgid, int index);

}  // namespace corvane
