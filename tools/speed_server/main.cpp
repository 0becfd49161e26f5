// tarvik-speed-server: the speed-test endpoints on a port of this machine, for trying the
// client against a known server and for the shaped-link benchmark.
#include "tools/speed_server/speed_server.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <cstdio>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tarvik-speed-server"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Answers \"meta\", \"cdn-cgi/trace\", \"__down?bytes=N\" and \"__up\" like the "
        "speed-test service, with switches for its failures."));
    parser.addHelpOption();
    const QCommandLineOption address(QStringLiteral("address"),
                                     QStringLiteral("Address to listen on (default 127.0.0.1)."),
                                     QStringLiteral("ip"), QStringLiteral("127.0.0.1"));
    const QCommandLineOption port(QStringLiteral("port"),
                                  QStringLiteral("Port (default: any free)."), QStringLiteral("n"),
                                  QStringLiteral("0"));
    const QCommandLineOption failPings(QStringLiteral("fail-pings"),
                                       QStringLiteral("Answer pings with 503."));
    const QCommandLineOption stall(QStringLiteral("stall-downloads"),
                                   QStringLiteral("Send download headers, then nothing."));
    const QCommandLineOption refuse(QStringLiteral("refuse-downloads"),
                                    QStringLiteral("Hang up on downloads without answering."));
    const QCommandLineOption cut(QStringLiteral("cut-after"),
                                 QStringLiteral("Hang up downloads after this many bytes."),
                                 QStringLiteral("bytes"), QStringLiteral("0"));
    const QCommandLineOption delay(QStringLiteral("delay-ms"),
                                   QStringLiteral("Wait this long before every answer."),
                                   QStringLiteral("ms"), QStringLiteral("0"));
    const QCommandLineOption forbid(
        QStringLiteral("forbid-from"),
        QStringLiteral("Refuse downloads of this many bytes or more with 403 (0: never)."),
        QStringLiteral("bytes"), QStringLiteral("100000000"));
    const QCommandLineOption rateLimit(QStringLiteral("rate-limit"),
                                       QStringLiteral("Answer the next N transfers with 429."),
                                       QStringLiteral("n"), QStringLiteral("0"));
    const QCommandLineOption retryAfter(QStringLiteral("retry-after"),
                                        QStringLiteral("Retry-After seconds sent with a 429."),
                                        QStringLiteral("s"), QStringLiteral("-1"));
    const QCommandLineOption severalMetrics(
        QStringLiteral("several-timing-metrics"),
        QStringLiteral("Server-Timing with cfL4, cfSpeedEdge and cfSpeedWorker."));
    const QCommandLineOption serverMs(QStringLiteral("server-ms"),
                                      QStringLiteral("Processing time Server-Timing reports."),
                                      QStringLiteral("ms"), QStringLiteral("0"));
    const QCommandLineOption coloObject(QStringLiteral("colo-object"),
                                        QStringLiteral("Give \"colo\" in meta as an object."));
    const QCommandLineOption uploadRate(
        QStringLiteral("upload-read-rate"),
        QStringLiteral("Read upload bodies at most this fast, all together (0: at once)."),
        QStringLiteral("bytes/s"), QStringLiteral("0"));
    QStringList kinds;
    for (const auto kind : tarvik::tools::hostileAnswers()) {
        kinds << tarvik::tools::name(kind);
    }
    const QString kindList = kinds.join(QStringLiteral(", "));
    const QCommandLineOption hostile(
        QStringLiteral("hostile"), QStringLiteral("Send every answer this way: %1.").arg(kindList),
        QStringLiteral("kind"), QStringLiteral("none"));
    const QCommandLineOption hostileTransfers(
        QStringLiteral("hostile-transfers"),
        QStringLiteral("Send the downloads' and uploads' answers this way."),
        QStringLiteral("kind"), QStringLiteral("none"));
    parser.addOptions({address, port, failPings, stall, refuse, cut, delay, forbid, rateLimit,
                       retryAfter, severalMetrics, serverMs, coloObject, uploadRate, hostile,
                       hostileTransfers});
    parser.process(app);
    const auto hostility = tarvik::tools::hostileAnswerNamed(parser.value(hostile));
    const auto transferHostility =
        tarvik::tools::hostileAnswerNamed(parser.value(hostileTransfers));
    if (!hostility || !transferHostility) {
        std::fprintf(stderr, "tarvik-speed-server: the hostile answers are %s\n",
                     qPrintable(kindList));
        return 2;
    }

    tarvik::tools::SpeedServer server;
    auto& k = server.knobs;
    k.failPings = parser.isSet(failPings);
    k.stallDownloads = parser.isSet(stall);
    k.refuseDownloads = parser.isSet(refuse);
    k.cutDownloadsAfter = parser.value(cut).toLongLong();
    k.answerDelayMs = parser.value(delay).toInt();
    k.forbidDownloadsFrom = parser.value(forbid).toLongLong();
    k.rateLimitTransfers = parser.value(rateLimit).toInt();
    k.retryAfterSeconds = parser.value(retryAfter).toInt();
    k.severalTimingMetrics = parser.isSet(severalMetrics);
    k.serverMilliseconds = parser.value(serverMs).toInt();
    k.coloAsObject = parser.isSet(coloObject);
    k.uploadReadRate = parser.value(uploadRate).toLongLong();
    k.hostileAnswers = *hostility;
    k.hostileTransfers = *transferHostility;

    const QHostAddress host(parser.value(address));
    const quint16 bound = server.listen(host, static_cast<quint16>(parser.value(port).toUInt()));
    if (bound == 0) {
        std::fprintf(stderr, "tarvik-speed-server: can't listen on %s port %s\n",
                     qPrintable(parser.value(address)), qPrintable(parser.value(port)));
        return 1;
    }
    const QString shown = host.protocol() == QAbstractSocket::IPv6Protocol
                              ? QStringLiteral("[%1]").arg(host.toString())
                              : host.toString();
    std::printf("http://%s:%u/\n", qPrintable(shown), bound);
    std::fflush(stdout);
    return QCoreApplication::exec();
}
