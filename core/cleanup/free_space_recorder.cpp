#include "core/cleanup/free_space_recorder.h"

#include "core/cleanup/cleanup_record.h"
#include "core/sys/file_calls.h"

#include <QDateTime>
#include <QFile>
#include <sys/statvfs.h>
#include <utility>

namespace tarvik {

FreeSpaceRecorder::FreeSpaceRecorder(QString home, QString timelinePath, QObject* parent)
    : QObject(parent), home_(std::move(home)), path_(std::move(timelinePath)) {
    timer_.setInterval(60 * 60 * 1000);
    connect(&timer_, &QTimer::timeout, this, &FreeSpaceRecorder::record);
    timer_.start();
    QTimer::singleShot(0, this, &FreeSpaceRecorder::record);
}

bool FreeSpaceRecorder::record() {
    struct statvfs fs {};
    if (sys::statvfs(QFile::encodeName(home_).constData(), &fs) != 0) {
        return false;
    }
    FreeSpaceTimeline timeline(path_);
    const FreeSpaceSample sample{
        QDateTime::currentDateTimeUtc(),
        static_cast<std::int64_t>(fs.f_bavail) * static_cast<std::int64_t>(fs.f_frsize),
        static_cast<std::int64_t>(fs.f_blocks) * static_cast<std::int64_t>(fs.f_frsize)};
    return timeline.recordSampleIfDue(sample);
}

} // namespace tarvik
