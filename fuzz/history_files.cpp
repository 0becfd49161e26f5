// Tarvik's own JSON files, which anything may have damaged: the speed-test history, the
// free-space timeline and the keep-awake schedules (read, then used as the program uses them).
#include "core/awake/keep_awake_evaluator.h"
#include "core/awake/keep_awake_schedule_store.h"
#include "core/cleanup/cleanup_record.h"
#include "core/speedtest/speed_test_history.h"
#include "fuzz/fuzz_input.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::InputFile file(data, size);
    const QString path = QString::fromStdString(file.path().string());
    for (const SpeedTestResult& result : SpeedTestHistoryStore(path).load()) {
        SpeedTestResult::fromJson(result.toJson());
    }
    FreeSpaceTimeline(path).load();

    const auto decoded = KeepAwakeScheduleStore::decode(fuzz::bytes(data, size));
    const QTimeZone zone("Europe/Berlin"); // a zone with clock changes, the same on any machine
    const QDateTime now = fuzz::now();
    for (const KeepAwakeSchedule& schedule : decoded.schedules) {
        schedule.displayName();
        KeepAwakeEvaluator::openWindowEnd(schedule, now, zone);
    }
    KeepAwakeEvaluator::evaluate(decoded.schedules, std::nullopt, now, zone);
    KeepAwakeEvaluator::nextWindowStart(decoded.schedules, now, zone);
    return 0;
}
