// The production serial port on a pseudo-terminal: bytes both ways and a
// cable pulled and plugged back in.

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
    void PortNumbersAndPaths_data();
    void PortNumbersAndPaths();
    void BytesBothWaysUnpaced();
    void PulledCableIsReportedOnceAndReopensAfterReplugging();
};

void tst_SimPty::PortNumbersAndPaths_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<QString>("device");
#ifdef Q_OS_WIN
    QTest::newRow("Com 1") << "1" << "COM1";
    QTest::newRow("Com 12") << "12" << "COM12";
#else
    QTest::newRow("Com 1") << "1" << "/dev/ttyS0";
    QTest::newRow("Com 12") << "12" << "/dev/ttyS11";
#endif
    QTest::newRow("path") << "/dev/ttyUSB0" << "/dev/ttyUSB0";
    QTest::newRow("Com 0 is no number") << "0" << "0";
}

void tst_SimPty::PortNumbersAndPaths()
{
    QFETCH(QString, port);
    QFETCH(QString, device);
    QCOMPARE(QtSerialPort::DeviceName(port), device);
}

// The line's pace depends on the machine's load and is measured by a
// benchmark; here the bytes must arrive whole and in order.
void tst_SimPty::BytesBothWaysUnpaced()
{
    clsPtyTransport lcPty;
    QString lsError;
    QVERIFY2(lcPty.Open(lsError), qPrintable(lsError));
    lcPty.SetBaudRate(0);
    QtEventLoop lcLoop;
    QtSerialPort lcPort(lcLoop);
    lcPort.SetCommPort(lcPty.SlavePath());
    QVERIFY(lcPort.SetPortOpen(true));

    // The transport verbs on the real port: a wait that ends with input, a purge that drops it.
    lcPty.Write("stale");
    QVERIFY(lcPort.WaitForInput(lcLoop.timeGetTime() + 2000));
    const quint32 llAllIn = lcLoop.timeGetTime() + 100;
    while (qint32(lcLoop.timeGetTime() - llAllIn) < 0)
        lcLoop.WaitForEvents(llAllIn);
    lcPort.Purge();
    QVERIFY(lcPort.Input().isEmpty());
    const quint32 llDeadline = lcLoop.timeGetTime() + 50;
    QVERIFY(!lcPort.WaitForInput(llDeadline));
    QVERIFY(qint32(lcLoop.timeGetTime() - llDeadline) >= 0);

    QSignalSpy lcToDisplay(&lcPty, &clsPtyTransport::Received);
    QVERIFY(lcPort.Output(QByteArray("\x00\x00\x66\x01\x07\xCE\xAE", 7)));
    QVERIFY(lcToDisplay.wait(2000));
    QCOMPARE(lcToDisplay.first().first().toByteArray(), QByteArray("\x00\x00\x66\x01\x07\xCE\xAE", 7));

    QByteArray lcSent;
    for (int i = 0; i < 576; ++i)
        lcSent.append(char(i));
    QByteArray lcReceived;
    int llEvents = 0;
    lcPort.SetOnComm([&]() {
        ++llEvents;
        lcReceived += lcPort.Input();
    });
    lcPty.Write(lcSent);
    QTRY_COMPARE_WITH_TIMEOUT(lcReceived.size(), lcSent.size(), 3000);
    QCOMPARE(lcReceived, lcSent);
    QVERIFY(llEvents >= 1);
}

void tst_SimPty::PulledCableIsReportedOnceAndReopensAfterReplugging()
{
    QTemporaryDir lcDir;
    const QString lsLink = lcDir.filePath(QStringLiteral("display"));
    QString lsError;
    auto lcPty = std::make_unique<clsPtyTransport>();
    QVERIFY2(lcPty->Open(lsError) && lcPty->SetLink(lsLink, lsError), qPrintable(lsError));

    QtEventLoop lcLoop;
    QtSerialPort lcPort(lcLoop);
    QStringList lcReports;
    lcPort.SetOnError([&](const QString& vsText) { lcReports << vsText; });
    lcPort.SetCommPort(lsLink);
    QVERIFY(lcPort.SetPortOpen(true));

    lcPty.reset();
    QTRY_VERIFY_WITH_TIMEOUT(!lcPort.PortOpen(), 3000);
    QCOMPARE(lcReports.size(), 1);
    QVERIFY2(lcReports.first().startsWith(QStringLiteral("Serial port ")), qPrintable(lcReports.first()));
    // Trying again while the cable is out fails without a second report.
    QVERIFY(!lcPort.SetPortOpen(true));
    QVERIFY(!lcPort.Output("x"));
    QCOMPARE(lcReports.size(), 1);

    lcPty = std::make_unique<clsPtyTransport>();
    QVERIFY2(lcPty->Open(lsError) && lcPty->SetLink(lsLink, lsError), qPrintable(lsError));
    QVERIFY(lcPort.SetPortOpen(true));
    QSignalSpy lcToDisplay(lcPty.get(), &clsPtyTransport::Received);
    QVERIFY(lcPort.Output("again"));
    QVERIFY(lcToDisplay.wait(2000));
    QCOMPARE(lcToDisplay.first().first().toByteArray(), QByteArray("again"));
}

QTEST_GUILESS_MAIN(tst_SimPty)
#include "tst_SimPty.moc"
