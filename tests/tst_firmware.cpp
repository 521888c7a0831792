// The Memory Display firmware download: the handshake around the stream and
// the stream's rules for every answer of the bootloader, on the virtual clock
// against the simulated display and its bootloader, whose own judgement of
// records is pinned first.

#include "support/GoldenData.h"
#include "support/SimRig.h"
#include "support/TestFiles.h"

#include "app/clsError.h"
#include "sim/clsSimSamples.h"

#include <QTest>

namespace {
// Data records of four bytes at addresses 0, 4, 8, …, the end record, the start command.
QList<QByteArray> Records(int vlData)
{
    QList<QByteArray> lcLines;
    for (int i = 0; i < vlData; ++i)
        lcLines << clsSimBootloader::Record(clsSimBootloader::kDataRecord, quint16(4 * i), QByteArray(4, char(0x10 + i)))
                       .toHex()
                       .toUpper();
    lcLines << clsSimBootloader::Record(clsSimBootloader::kEndRecord, 0, {}).toHex().toUpper() << "4853";
    return lcLines;
}

QString PutFirmware(SimRig& r, const QByteArray& vcHeader, const QList<QByteArray>& vcLines)
{
    const QString lsPath = r.t.Home() + QStringLiteral("fw.kvt_md");
    WriteAll(lsPath, vcHeader + "\r\n" + vcLines.join("\r\n") + "\r\n");
    return lsPath;
}

// How often each line's bytes went out on the port.
QList<int> Sends(const SimRig& r, const QList<QByteArray>& vcLines)
{
    const QByteArray lcWritten = r.port.Written().join();
    QList<int> lcCounts;
    for (const QByteArray& lcLine : vcLines)
        lcCounts << int(lcWritten.count(QByteArray::fromHex(lcLine)));
    return lcCounts;
}

clsError Download(SimRig& r, const QString& vsFile)
{
    clsError lcError;
    r.app().subStartSoftwareDownload(lcError, vsFile);
    return lcError;
}

const QStringList kWarning{"MdWarning(1)", "MdWarning(0)"};

struct StreamCase { QString fault; QList<int> sends; int resyncs; quint32 minMs, maxMs; };
// file: "-" none, "?" not there, else the header
struct HandshakeCase { QString file, fault, box; QList<int> funcs; int error; };
}
Q_DECLARE_METATYPE(StreamCase)
Q_DECLARE_METATYPE(HandshakeCase)

class tst_Firmware : public QObject
{
    Q_OBJECT

private slots:
    // The simulated bootloader's own judgement. chunks: hex, each handed over
    // on its own, split at "|"; it restarts on REB and on a silent start command.
    void bootloader_data()
    {
        QTest::addColumn<QString>("chunks");
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QByteArray>("answers");
        for (const QStringList& f : DataTable(QStringLiteral("bootloader-answers.txt"), 4))
            QTest::newRow(qPrintable(f[0])) << f[1] << f[2] << f[3].toLatin1();
    }
    void bootloader()
    {
        QFETCH(QString, chunks);
        QFETCH(QString, fault);
        QFETCH(QByteArray, answers);
        SimRig r;
        r.Fault(fault);
        QByteArray lcAnswers;
        for (const QString& lsChunk : chunks.split(QLatin1Char('|')))
            lcAnswers += r.bootloader.Receive(QByteArray::fromHex(lsChunk.toLatin1()));
        QCOMPARE(lcAnswers, answers);
        QCOMPARE(r.bootloader.Restarted(), answers.endsWith("REB\r\n") || fault.startsWith(QLatin1String("silent-start")));
    }

    // What each answer of the bootloader leads to. Three data records, the
    // end record and the start command; a count per line of how often the
    // bootloader was given it.
    void streamRules_data()
    {
        QTest::addColumn<StreamCase>("c");
        for (const QStringList& f : DataTable(QStringLiteral("firmware-stream.txt"), 6)) {
            QList<int> lcSends;
            for (const QString& lsCount : f[2].split(QLatin1Char(' ')))
                lcSends << lsCount.toInt();
            QTest::newRow(qPrintable(f[0])) << StreamCase{f[1], lcSends, f[3].toInt(), f[4].toUInt(), f[5].toUInt()};
        }
    }
    void streamRules()
    {
        QFETCH(StreamCase, c);
        SimRig r;
        const QList<QByteArray> lcLines = Records(3);
        const QString lsFile = PutFirmware(r, "MD firmware 1.2", lcLines);
        if (c.fault != QLatin1String("bare-ack"))
            r.Fault(c.fault);
        else
            r.display.SetBootloaderHook([&r](const QByteArray& vcBytes) {
                r.bootloaderReceived += vcBytes;
                const QByteArray lcReply = r.bootloader.Receive(vcBytes);
                return BootloaderReply{QByteArray(lcReply).replace("\r\n", ""), r.bootloader.Restarted()};
            });
        clsError lcError = Download(r, lsFile);
        QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
        QCOMPARE(Sends(r, lcLines), c.sends);
        QCOMPARE(int(r.bootloaderReceived.count(QByteArray(256, 'Y'))), c.resyncs);
        // no line ends travel, nor the header
        QVERIFY(!r.bootloaderReceived.contains('\r') && !r.bootloaderReceived.contains('\n'));
        QVERIFY(!r.bootloaderReceived.contains("MD "));
        const quint32 llMs = r.clock->timeGetTime();
        QVERIFY2(llMs >= c.minMs && llMs <= c.maxMs, qPrintable(QString::number(llMs)));
        QCOMPARE(r.t.dialogs.Shown(), QStringList());
        // the highlighted warning and the screen text around the stream
        QCOMPARE(r.Funcs(), (QList<int>{0x0F, 0xD9, 0x0F, 0xCB}));
        QCOMPARE(r.display.ScreenText(), (QStringList{" Don't Disconnect!", QString(18, QLatin1Char(' '))}));
        QCOMPARE(r.t.window.calls.filter(QStringLiteral("MdWarning")), kWarning);
        QCOMPARE(r.t.window.bars[int(IMainWindow::Bar::Download)].value, 0);
        if (!c.fault.startsWith(QLatin1String("reb")))
            QCOMPARE(r.bootloader.Program(), QByteArray::fromHex("101010101111111112121212"));
    }

    // Each way out of the handshake, with its box and the display's screen texts.
    void handshake_data()
    {
        QTest::addColumn<HandshakeCase>("c");
        for (const QStringList& f : DataTable(QStringLiteral("firmware-handshake.txt"), 6)) {
            QList<int> lcFuncs;
            for (const char lcFunc : QByteArray::fromHex(f[4].toLatin1()))
                lcFuncs << quint8(lcFunc);
            QTest::newRow(qPrintable(f[0])) << HandshakeCase{f[1], f[2], f[3], lcFuncs, f[5].toInt(nullptr, 0)};
        }
    }
    void handshake()
    {
        QFETCH(HandshakeCase, c);
        const auto& [file, fault, box, funcs, error] = c;
        SimRig r;
        r.Fault(fault);
        QString lsFile = file == QLatin1String("-") ? QString() : r.t.Home() + QStringLiteral("fw.kvt_md");
        if (file.size() > 1)
            WriteAll(lsFile, file.toLatin1());
        QCOMPARE(Download(r, lsFile).Error(), error);
        QCOMPARE(r.t.dialogs.Shown(), box.isEmpty() ? QStringList() : QStringList{QString(box).replace("%1", r.t.Home())});
        QCOMPARE(r.Funcs(), funcs);
        if (funcs.size() > 1) {
            QCOMPARE(r.display.ScreenText().first(), QStringLiteral(" Don't Disconnect!"));
            QCOMPARE(r.display.ScreenPlaces().first(), QByteArray::fromHex("0B280001"));
        }
        if (funcs.count(0x0F) == 2)
            QCOMPARE(r.display.ScreenText().last(), QString(18, QLatin1Char(' ')));
        QCOMPARE(r.t.window.calls.contains(QStringLiteral("MdWarning(1)")), funcs.size() == 2);
        QVERIFY(r.bootloaderReceived.isEmpty() || funcs.size() == 2);
    }

    // A stop request ends the stream between two sends, also while the unit
    // stays silent for ever, and the user learns that the display waits in
    // its bootloader.
    void interruption()
    {
        SimRig r;
        r.bootloader.SetSilentLines(1000000);
        const QString lsFile = PutFirmware(r, "MD x", Records(2));
        r.clock->ScheduleIn(50000, [&r]() { r.app().RequestCancel(); });
        clsError lcError = Download(r, lsFile);
        QCOMPARE(lcError.Error(), 0x20000002);
        const QString lsText = QStringLiteral(
            "Firmware update stopped: the Memory Display stays in its bootloader until the update is run again.");
        QCOMPARE(lcError.Description(), lsText);
        QCOMPARE(r.t.dialogs.Shown(), QStringList{QStringLiteral("Corvane Desktop: ") + lsText});
        QVERIFY(r.t.LogLines().contains(QStringLiteral("ERROR ") + lsText));
        // the wait for the line in flight and the unanswered screen text
        QVERIFY2(r.clock->timeGetTime() < 50000 + 5000 + 1000 + 500, qPrintable(QString::number(r.clock->timeGetTime())));
        QCOMPARE(Sends(r, Records(2)).value(1), 0);
    }

    // The cable pulled while a line goes out or while the bootloader is
    // resynchronised: the port fails, the stream ends with its box at once.
    void cablePulled_data()
    {
        QTest::addColumn<int>("silentLines");
        QTest::addColumn<QByteArray>("pullAt"); // the bytes the bootloader has when the cable goes
        QTest::newRow("mid-line") << 0 << QByteArray::fromHex(Records(2)[1]).left(4);
        QTest::newRow("during a resync") << 4 << QByteArray("Y");
    }
    void cablePulled()
    {
        QFETCH(int, silentLines);
        QFETCH(QByteArray, pullAt);
        SimRig r;
        r.bootloader.SetSilentLines(silentLines);
        const QString lsFile = PutFirmware(r, "MD x", Records(2));
        const QByteArray lcBefore = ReadAll(lsFile);
        r.display.SetBootloaderHook([&r, pullAt](const QByteArray& vcBytes) {
            r.bootloaderReceived += vcBytes;
            if (r.bootloaderReceived.endsWith(pullAt)) {
                r.port.SetCableConnected(false);
                r.port.SetPortOpen(false);
            }
            return BootloaderReply{r.bootloader.Receive(vcBytes), false};
        });
        QCOMPARE(Download(r, lsFile).Error(), 0x20000004);
        QCOMPARE(r.t.dialogs.Shown(), QStringList{QStringLiteral("Error: ERROR in opening software download file:") + lsFile});
        QCOMPARE(ReadAll(lsFile), lcBefore);
        QVERIFY2(r.clock->timeGetTime() < 25000, qPrintable(QString::number(r.clock->timeGetTime())));
        QCOMPARE(r.t.window.calls.filter(QStringLiteral("MdWarning")), kWarning);
    }

    // The sample file of the simulator goes through whole: every line once, in order.
    void sampleFile()
    {
        SimRig r;
        const QString lsFile = r.t.Home() + QStringLiteral("sample.kvt_md");
        const QByteArray lcSample = clsSimSamples::FirmwareFile(300);
        WriteAll(lsFile, lcSample);
        QVERIFY(!Download(r, lsFile).IsError());
        QByteArray lcLines;
        for (const QByteArray& lcLine : lcSample.split('\n').mid(1))
            lcLines += QByteArray::fromHex(lcLine.trimmed());
        QCOMPARE(r.bootloaderReceived, lcLines);
        QCOMPARE(r.bootloader.Program().size(), 300);
        QVERIFY(lcLines.endsWith("HS"));
    }
};

QTEST_GUILESS_MAIN(tst_Firmware)
#include "tst_firmware.moc"
