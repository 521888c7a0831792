// The program's serial port on a pseudo-terminal: port names, the transport
// verbs, bytes both ways, and a cable pulled and plugged in again.

#include "platform/QtEventLoop.h"
#include "platform/QtSerialPort.h"
#include "sim/clsPtyTransport.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

class tst_SimPty : public QObject
{
    Q_OBJECT
private slots:
    void portNumbersAndPaths_data()
    {
        QTest::addColumn<QString>("port");
        QTest::addColumn<QString>("device");
        QTest::newRow("Com 1") << "1" << "/dev/ttyS0";
        QTest::newRow("Com 12") << "12" << "/dev/ttyS11";
        QTest::newRow("path") << "/dev/ttyUSB0" << "/dev/ttyUSB0";
        QTest::newRow("Com 0 is no number") << "0" << "0";
    }
    void portNumbersAndPaths()
    {
        QFETCH(QString, port);
        QFETCH(QString, device);
        QCOMPARE(QtSerialPort::DeviceName(port), device);
    }

    // The transport verbs on the real port, bytes whole and in order both
    // ways, and a cable pulled (reported once, however often the port is
    // tried meanwhile) and plugged in again. The line's pace is a benchmark's.
    void serialPortOnAPty()
    {
        QTemporaryDir lcDir;
        const QString lsLink = lcDir.filePath(QStringLiteral("display"));
        QString lsError;
        auto lcPty = std::make_unique<clsPtyTransport>();
        QVERIFY2(lcPty->Open(lsError) && lcPty->SetLink(lsLink, lsError), qPrintable(lsError));
        lcPty->SetBaudRate(0);
        QtEventLoop lcLoop;
        QtSerialPort lcPort(lcLoop);
        QStringList lcReports;
        lcPort.SetOnError([&](const QString& vsText) { lcReports << vsText; });
        lcPort.SetCommPort(lsLink);
        QVERIFY(lcPort.SetPortOpen(true));

        lcPty->Write("stale");
        QVERIFY(lcPort.WaitForInput(lcLoop.timeGetTime() + 2000));
        QTest::qWait(100); // the rest of the stale bytes
        lcPort.Purge();
        QVERIFY(lcPort.Input().isEmpty());
        const quint32 llDeadline = lcLoop.timeGetTime() + 50;
        QVERIFY(!lcPort.WaitForInput(llDeadline));
        QVERIFY(qint32(lcLoop.timeGetTime() - llDeadline) >= 0);

        QSignalSpy lcToDisplay(lcPty.get(), &clsPtyTransport::Received);
        QVERIFY(lcPort.Output(QByteArray("\x00\x00\x66\x01\x07\xCE\xAE", 7)));
        QVERIFY(lcToDisplay.wait(2000));
        QCOMPARE(lcToDisplay.first().first().toByteArray(), QByteArray("\x00\x00\x66\x01\x07\xCE\xAE", 7));
        QByteArray lcSent;
        for (int i = 0; i < 576; ++i)
            lcSent.append(char(i));
        QByteArray lcReceived;
        lcPort.SetOnComm([&]() { lcReceived += lcPort.Input(); });
        lcPty->Write(lcSent);
        QTRY_COMPARE_WITH_TIMEOUT(lcReceived, lcSent, 3000);

        lcPty.reset();
        QTRY_VERIFY_WITH_TIMEOUT(!lcPort.PortOpen(), 3000);
        QVERIFY(!lcPort.SetPortOpen(true));
        QVERIFY(!lcPort.Output("x"));
        QCOMPARE(lcReports.size(), 1);
        QVERIFY2(lcReports.first().startsWith(QStringLiteral("Serial port ")), qPrintable(lcReports.first()));
        lcPty = std::make_unique<clsPtyTransport>();
        QVERIFY2(lcPty->Open(lsError) && lcPty->SetLink(lsLink, lsError), qPrintable(lsError));
        QVERIFY(lcPort.SetPortOpen(true));
        QSignalSpy lcAgain(lcPty.get(), &clsPtyTransport::Received);
        QVERIFY(lcPort.Output("again"));
        QVERIFY(lcAgain.wait(2000));
        QCOMPARE(lcAgain.first().first().toByteArray(), QByteArray("again"));
    }
};

QTEST_GUILESS_MAIN(tst_SimPty)
#include "tst_SimPty.moc"
