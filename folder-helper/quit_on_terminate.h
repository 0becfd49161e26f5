#pragma once

class QCoreApplication;

namespace tarvik {

// SIGTERM ends the event loop like a quit, so the resident helper's socket is removed on the
// way out. The handler only writes a byte to a pipe that the event loop watches.
void quitOnTerminate(QCoreApplication* app);

} // namespace tarvik
