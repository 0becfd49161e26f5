#pragma once

#include <QObject>
#include <QTimer>

namespace tarvik {

// Adds a sample of the home file system's free space to the timeline at start and every hour
// while Tarvik runs (the timeline keeps at most one an hour).
class FreeSpaceRecorder : public QObject {
    Q_OBJECT
public:
    FreeSpaceRecorder(QString home, QString timelinePath, QObject* parent = nullptr);

public slots:
    // Takes a sample now; false when the file system could not be read or none was due.
    bool record();

private:
    QString home_;
    QString path_;
    QTimer timer_;
};

} // namespace tarvik
