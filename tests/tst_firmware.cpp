// The Memory Display firmware download: the handshake around the stream and
// the stream's rules for every answer of the bootloader, on the virtual clock
// against the simulated display and its bootloader, whose own judgement of
// records is pinned first.

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
    WriteAll(lsPath, vcHeader + "\r\n" + (vcLines.isEmpty() ? QByteArray() : vcLines.join("\r\n") + "\r\n"));
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

QStringList Boxes(const SimRig& r)
{
    QStringList lcBoxes;
    for (const FakeUserDialogs::Box& lcBox : r.t.dialogs.boxes)
        lcBoxes << lcBox.title + QStringLiteral(": ") + lcBox.text;
    return lcBoxes;
}

clsError Download(SimRig& r, const QString& vsFile)
{
    clsError lcError;
    r.app().subStartSoftwareDownload(lcError, vsFile);
    return lcError;
}

const QStringList kWarning{"MdWarning(1)", "MdWarning(0)"};
}

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
        // 3A 02 0010 00 AA BB cs: 02+00+10+00+AA+BB = 0x177, cs = 0x89.
        const QString r = QStringLiteral("3a02001000aabb89");
        QTest::newRow("data record") << r << "" << QByteArray("OK\r\n");
        QTest::newRow("record split over three reads") << "3a|0200|1000aabb89" << "" << QByteArray("OK\r\n");
        QTest::newRow("two records in one read") << r + r << "" << QByteArray("OK\r\nOK\r\n");
        QTest::newRow("bad checksum") << "3a02001000aabb88" << "" << QByteArray("NAK\r\n");
        QTest::newRow("unknown record type") << "3a02001007aabb82" << "" << QByteArray("NAK\r\n");
        QTest::newRow("end record") << "3a00000001ff" << "" << QByteArray("ACK\r\n");
        QTest::newRow("resync fill between records") << QString::fromLatin1(QByteArray(256, 'Y').toHex()) + "|" + r << "" << QByteArray("OK\r\n");
        QTest::newRow("start command") << "4853" << "" << QByteArray("REB\r\n");
        QTest::newRow("H without S is noise") << "48|59" + r << "" << QByteArray("OK\r\n");
        QTest::newRow("nak-lines=2: the third try passes") << r + "|" + r + "|" + r << "nak-lines" << QByteArray("NAK\r\nNAK\r\nOK\r\n");
        QTest::newRow("silent on the start command") << "4853" << "silent-start" << QByteArray();
        QTest::newRow("silent-lines=1: the second try is answered") << r + "|" + r << "silent-lines" << QByteArray("OK\r\n");
        QTest::newRow("reb-at=2: restarts before the end") << r + "|" + r + "|" + r << "reb-at" << QByteArray("OK\r\nREB\r\n");
    }
    void bootloader()
    {
        QFETCH(QString, chunks);
        QFETCH(QString, fault);
        QFETCH(QByteArray, answers);
        clsSimBootloader lcBoot;
        lcBoot.SetNakLines(fault == QLatin1String("nak-lines") ? 2 : 0);
        lcBoot.SetSilentLines(fault == QLatin1String("silent-lines") ? 1 : 0);
        lcBoot.SetRebootAtRecord(fault == QLatin1String("reb-at") ? 2 : 0);
        lcBoot.SetSilentOnStart(fault == QLatin1String("silent-start"));
        QByteArray lcAnswers;
        for (const QString& lsChunk : chunks.split(QLatin1Char('|')))
            lcAnswers += lcBoot.Receive(QByteArray::fromHex(lsChunk.toLatin1()));
        QCOMPARE(lcAnswers, answers);
        QCOMPARE(lcBoot.Restarted(), answers.endsWith("REB\r\n") || fault == QLatin1String("silent-start"));
    }

    // What each answer of the bootloader leads to. Three data records, the
    // end record and the start command; a count per line of how often the
    // bootloader was given it.
    void streamRules_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QList<int>>("sends");
        QTest::addColumn<int>("resyncs");
        QTest::addColumn<quint32>("minMs"); // virtual time of the stream, at least
        QTest::addColumn<quint32>("maxMs");
        QTest::newRow("every line answered") << "" << QList<int>{1, 1, 1, 1, 1} << 0 << 0u << 1000u;
        QTest::newRow("NAK twice, then OK: sent three times") << "nak-lines=2" << QList<int>{3, 1, 1, 1, 1} << 0 << 0u << 1000u;
        QTest::newRow("NAK has no limit") << "nak-lines=30" << QList<int>{31, 1, 1, 1, 1} << 0 << 0u << 1000u;
        QTest::newRow("silent start command: four sends, then done")
            << "silent-start=1" << QList<int>{1, 1, 1, 1, 4} << 0 << 20000u << 21000u;
        QTest::newRow("three silences: the fourth send is answered")
            << "silent-lines=3" << QList<int>{4, 1, 1, 1, 1} << 0 << 15000u << 16000u;
        QTest::newRow("four silences: 256 Y, then the line again")
            << "silent-lines=4" << QList<int>{5, 1, 1, 1, 1} << 1 << 20356u << 21500u;
        QTest::newRow("eight silences: two resync rounds")
            << "silent-lines=8" << QList<int>{9, 1, 1, 1, 1} << 2 << 40712u << 42500u;
        QTest::newRow("REB before the end: the rest is not sent") << "reb-at=2" << QList<int>{1, 1, 0, 0, 0} << 0 << 0u << 1000u;
        QTest::newRow("answers without line end are judged only after 5000 ms")
            << "bare-ack" << QList<int>{1, 1, 1, 1, 1} << 0 << 25000u << 26000u;
    }
    void streamRules()
    {
        QFETCH(QString, fault);
        QFETCH(QList<int>, sends);
        QFETCH(int, resyncs);
        QFETCH(quint32, minMs);
        QFETCH(quint32, maxMs);
        SimRig r;
        const QList<QByteArray> lcLines = Records(3);
        const QString lsFile = PutFirmware(r, "MD firmware 1.2", lcLines);
        const int llCount = fault.section(QLatin1Char('='), 1).toInt();
        if (fault.startsWith(QLatin1String("nak-lines")))
            r.bootloader.SetNakLines(llCount);
        else if (fault.startsWith(QLatin1String("silent-lines")))
            r.bootloader.SetSilentLines(llCount);
        else if (fault.startsWith(QLatin1String("silent-start")))
            r.bootloader.SetSilentOnStart(true);
        else if (fault.startsWith(QLatin1String("reb-at")))
            r.bootloader.SetRebootAtRecord(llCount);
        else if (fault == QLatin1String("bare-ack"))
            r.display.SetBootloaderHook([&r](const QByteArray& vcBytes) {
                r.bootloaderReceived += vcBytes;
                const QByteArray lcReply = r.bootloader.Receive(vcBytes);
                return BootloaderReply{QByteArray(lcReply).replace("\r\n", ""), r.bootloader.Restarted()};
            });
        clsError lcError = Download(r, lsFile);
        QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
        QCOMPARE(Sends(r, lcLines), sends);
        QCOMPARE(int(r.bootloaderReceived.count(QByteArray(256, 'Y'))), resyncs);
        // no line ends travel, nor the header
        QVERIFY(!r.bootloaderReceived.contains('\r') && !r.bootloaderReceived.contains('\n'));
        QVERIFY(!r.bootloaderReceived.contains("MD "));
        const quint32 llMs = r.clock->timeGetTime();
        QVERIFY2(llMs >= minMs && llMs <= maxMs, qPrintable(QString::number(llMs)));
        QCOMPARE(Boxes(r), QStringList());
        // the highlighted warning and the screen text around the stream
        QCOMPARE(r.Funcs(), (QList<int>{0x0F, 0xD9, 0x0F, 0xCB}));
        QCOMPARE(r.display.ScreenText(), (QStringList{" Don't Disconnect!", QString(18, QLatin1Char(' '))}));
        QCOMPARE(r.t.window.calls.filter(QStringLiteral("MdWarning")), kWarning);
        QCOMPARE(r.t.window.bars[int(IMainWindow::Bar::Download)].value, 0);
        if (!fault.startsWith(QLatin1String("reb")))
            QCOMPARE(r.bootloader.Program(), QByteArray::fromHex("101010101111111112121212"));
    }

    // Each way out of the handshake, with its box and the display's screen texts.
    void handshake_data()
    {
        QTest::addColumn<QString>("file"); // "-" none, "?" not there, else the header
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("box");
        QTest::addColumn<QList<int>>("funcs");
        QTest::addColumn<int>("error");
        const QList<int> lcRefused{0x0F, 0xD9, 0x0F, 0xCB};
        // in the bootloader the display takes no frames: the last 0x0F and 0xCB go unheard
        const QList<int> lcInBootloader{0x0F, 0xD9};
        const QString lsLine3 = QStringLiteral("ERROR: Line 3 of '%1fw.kvt_md' is ");
        QTest::newRow("no file chosen") << "-" << "" << "ERROR: No download file selected." << QList<int>{0xCB} << 0x20000009;
        QTest::newRow("file missing") << "?" << "" << "ERROR: Unable to find file '%1fw.kvt_md'" << QList<int>{0xCB}
                                      << 0x2000000A;
        QTest::newRow("a line that is not hex") << "bad" << "" << lsLine3 + "not made of pairs of hexadecimal digits."
                                                << QList<int>{0xCB} << 0x20000004;
        QTest::newRow("an empty line") << "empty" << "" << lsLine3 + "empty." << QList<int>{0xCB} << 0x20000004;
        QTest::newRow("no answer to 0xD9") << "MD x" << "silent-d9" << "ERROR: Display not found." << lcRefused << 0x20000001;
        QTest::newRow("display can't download") << "MD x" << "refuse-d9" << "ERROR: Device can't download." << lcRefused
                                                << 0x20000001;
        QTest::newRow("header not MD: nothing sent, no word") << "XD x" << "" << "" << lcInBootloader << 0;
        QTest::newRow("header alone") << "MD x" << "header-only" << "Error: ERROR in opening software download file:%1fw.kvt_md"
                                      << lcInBootloader << 0x20000004;
    }
    void handshake()
    {
        QFETCH(QString, file);
        QFETCH(QString, fault);
        QFETCH(QString, box);
        QFETCH(QList<int>, funcs);
        QFETCH(int, error);
        SimRig r;
        QString lsError;
        if (fault.endsWith(QLatin1String("-d9")))
            QVERIFY(r.display.Faults().Parse(fault, lsError));
        QList<QByteArray> lcLines = Records(1);
        if (file == QLatin1String("bad"))
            lcLines[1] = "3A0G";
        if (file == QLatin1String("empty"))
            lcLines[1].clear();
        if (fault == QLatin1String("header-only"))
            lcLines.clear();
        const bool lbBadLine = file == QLatin1String("bad") || file == QLatin1String("empty");
        QString lsFile = PutFirmware(r, lbBadLine ? "MD x" : file.toLatin1(), lcLines);
        if (file == QLatin1String("-"))
            lsFile.clear();
        else if (file == QLatin1String("?"))
            QFile::remove(lsFile);
        QCOMPARE(Download(r, lsFile).Error(), error);
        QCOMPARE(Boxes(r), box.isEmpty() ? QStringList() : QStringList{QString(box).replace("%1", r.t.Home())});
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
        QCOMPARE(Boxes(r), QStringList{QStringLiteral("Corvane Desktop: ") + lsText});
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
        QCOMPARE(Boxes(r), QStringList{QStringLiteral("Error: ERROR in opening software download file:") + lsFile});
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
