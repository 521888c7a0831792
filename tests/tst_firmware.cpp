// The Memory Display firmware download: the handshake around the stream and
// the stream's rules for every answer of the bootloader, on the virtual clock
// against the simulated display and its bootloader.

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
    QByteArray lcText = vcHeader + "\r\n";
    for (const QByteArray& lcLine : vcLines)
        lcText += lcLine + "\r\n";
    WriteAll(lsPath, lcText);
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
}

class tst_Firmware : public QObject
{
    Q_OBJECT

private slots:
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
        QTest::newRow("NAK twice, then OK: sent three times")
            << "nak-lines=2" << QList<int>{3, 1, 1, 1, 1} << 0 << 0u << 1000u;
        QTest::newRow("NAK has no limit") << "nak-lines=30" << QList<int>{31, 1, 1, 1, 1} << 0 << 0u << 1000u;
        QTest::newRow("silent start command: four sends, then done")
            << "silent-start=1" << QList<int>{1, 1, 1, 1, 4} << 0 << 20000u << 21000u;
        QTest::newRow("three silences: the fourth send is answered")
            << "silent-lines=3" << QList<int>{4, 1, 1, 1, 1} << 0 << 15000u << 16000u;
        QTest::newRow("four silences: 256 Y, then the line again")
            << "silent-lines=4" << QList<int>{5, 1, 1, 1, 1} << 1 << 20356u << 21500u;
        QTest::newRow("eight silences: two resync rounds")
            << "silent-lines=8" << QList<int>{9, 1, 1, 1, 1} << 2 << 40712u << 42500u;
        QTest::newRow("REB before the end: the rest is not sent")
            << "reb-at=2" << QList<int>{1, 1, 0, 0, 0} << 0 << 0u << 1000u;
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
        clsError lcError;
        r.app().subStartSoftwareDownload(lcError, lsFile);
        QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
        QCOMPARE(Sends(r, lcLines), sends);
        QCOMPARE(int(r.bootloaderReceived.count(QByteArray(256, 'Y'))), resyncs);
        // no line ends travel, nor the header
        QVERIFY(!r.bootloaderReceived.contains('\r') && !r.bootloaderReceived.contains('\n'));
        QVERIFY(!r.bootloaderReceived.contains("MD "));
        const quint32 llMs = r.clock->timeGetTime();
        QVERIFY2(llMs >= minMs && llMs <= maxMs, qPrintable(QString::number(llMs)));
        QCOMPARE(Boxes(r), QStringList());
        QCOMPARE(r.Funcs().last(), 0xCB);
        QCOMPARE(r.t.window.bars[int(IMainWindow::Bar::Download)].value, 0);
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
        QTest::newRow("no file chosen") << "-" << "" << "ERROR: No download file selected." << QList<int>{0xCB}
                                        << 0x20000009;
        QTest::newRow("file missing") << "?" << "" << "ERROR: Unable to find file '%1fw.kvt_md'" << QList<int>{0xCB}
                                      << 0x2000000A;
        QTest::newRow("a line that is not hex") << "bad" << ""
                                                << "ERROR: Line 3 of '%1fw.kvt_md' is not made of pairs of hexadecimal "
                                                   "digits."
                                                << QList<int>{0xCB} << 0x20000004;
        QTest::newRow("an empty line") << "empty" << "" << "ERROR: Line 3 of '%1fw.kvt_md' is empty."
                                       << QList<int>{0xCB} << 0x20000004;
        QTest::newRow("no answer to 0xD9") << "MD x" << "silent-d9" << "ERROR: Display not found." << lcRefused
                                           << 0x20000001;
        QTest::newRow("display can't download") << "MD x" << "refuse-d9" << "ERROR: Device can't download."
                                                << lcRefused << 0x20000001;
        QTest::newRow("header not MD: nothing sent, no word") << "XD x" << "" << "" << lcInBootloader << 0;
        QTest::newRow("header alone") << "MD x" << "header-only"
                                      << "Error: ERROR in opening software download file:%1fw.kvt_md"
                                      << lcInBootloader << 0x20000004;
    }
    void handshake()
    {
        QFETCH(QString, file);
        QFETCH(QString, fault);
        QFETCH(QString, box);
        QFETCH(QList<int>, funcs);
        QFETCH(int, error);
        const QList<int> lcInBootloader{0x0F, 0xD9};
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
        QString lsFile = PutFirmware(r, file == QLatin1String("bad") || file == QLatin1String("empty") ? "MD x" : file.toLatin1(), lcLines);
        if (file == QLatin1String("-"))
            lsFile.clear();
        else if (file == QLatin1String("?"))
            QFile::remove(lsFile);
        clsError lcError;
        r.app().subStartSoftwareDownload(lcError, lsFile);
        QCOMPARE(lcError.Error(), error);
        QCOMPARE(Boxes(r), box.isEmpty() ? QStringList() : QStringList{QString(box).replace("%1", r.t.Home())});
        QCOMPARE(r.Funcs(), funcs);
        if (funcs.size() > 1) {
            QCOMPARE(r.display.ScreenText().first(), QStringLiteral(" Don't Disconnect!"));
            QCOMPARE(r.display.ScreenPlaces().first(), QByteArray::fromHex("0B280001"));
        }
        if (funcs.count(0x0F) == 2)
            QCOMPARE(r.display.ScreenText().last(), QString(18, QLatin1Char(' ')));
        QCOMPARE(r.t.window.calls.contains(QStringLiteral("MdWarning(1)")), funcs == lcInBootloader);
        QVERIFY(r.bootloaderReceived.isEmpty() || funcs == lcInBootloader);
    }

    // The highlighted warning and the screen text around a complete stream.
    void warningAroundTheStream()
    {
        SimRig r;
        const QString lsFile = PutFirmware(r, "MD x", Records(2));
        clsError lcError;
        r.app().subStartSoftwareDownload(lcError, lsFile);
        QVERIFY(!lcError.IsError());
        QCOMPARE(r.t.window.calls.filter(QStringLiteral("MdWarning")),
                 (QStringList{"MdWarning(1)", "MdWarning(0)"}));
        QCOMPARE(r.Funcs(), (QList<int>{0x0F, 0xD9, 0x0F, 0xCB}));
        QCOMPARE(r.display.ScreenText(), (QStringList{" Don't Disconnect!", QString(18, QLatin1Char(' '))}));
        QCOMPARE(r.bootloader.Program(), QByteArray::fromHex("1010101011111111"));
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
        clsError lcError;
        r.app().subStartSoftwareDownload(lcError, lsFile);
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
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QByteArray>("pullAt"); // the bytes the bootloader has when the cable goes
        QTest::newRow("mid-line") << "" << QByteArray::fromHex(Records(2)[1]).left(4);
        QTest::newRow("during a resync") << "silent-lines=4" << QByteArray("Y");
    }
    void cablePulled()
    {
        QFETCH(QString, fault);
        QFETCH(QByteArray, pullAt);
        SimRig r;
        if (!fault.isEmpty())
            r.bootloader.SetSilentLines(4);
        const QList<QByteArray> lcLines = Records(2);
        const QString lsFile = PutFirmware(r, "MD x", lcLines);
        const QByteArray lcBefore = ReadAll(lsFile);
        r.display.SetBootloaderHook([&r, pullAt](const QByteArray& vcBytes) {
            r.bootloaderReceived += vcBytes;
            if (r.bootloaderReceived.endsWith(pullAt)) {
                r.port.SetCableConnected(false);
                r.port.SetPortOpen(false);
            }
            return BootloaderReply{r.bootloader.Receive(vcBytes), false};
        });
        clsError lcError;
        r.app().subStartSoftwareDownload(lcError, lsFile);
        QCOMPARE(lcError.Error(), 0x20000004);
        QCOMPARE(Boxes(r), QStringList{QStringLiteral("Error: ERROR in opening software download file:") + lsFile});
        QCOMPARE(ReadAll(lsFile), lcBefore);
        QVERIFY2(r.clock->timeGetTime() < 25000, qPrintable(QString::number(r.clock->timeGetTime())));
        QCOMPARE(r.t.window.calls.filter(QStringLiteral("MdWarning")),
                 (QStringList{"MdWarning(1)", "MdWarning(0)"}));
    }

    // The sample file of the simulator goes through whole.
    void sampleFile()
    {
        SimRig r;
        const QString lsFile = r.t.Home() + QStringLiteral("sample.kvt_md");
        WriteAll(lsFile, clsSimSamples::FirmwareFile(300));
        clsError lcError;
        r.app().subStartSoftwareDownload(lcError, lsFile);
        QVERIFY(!lcError.IsError());
        QCOMPARE(r.bootloader.Program().size(), 300);
        QCOMPARE(r.bootloaderReceived.right(2), QByteArray("HS"));
    }
};

QTEST_GUILESS_MAIN(tst_Firmware)
#include "tst_firmware.moc"
