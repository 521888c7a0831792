#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <array>
#include <functional>

class IEventLoop;

// The framed byte protocol of the display: builds request frames, reassembles
// reply frames from the byte stream, and waits for answers.
//
// Frame on the wire: 00 00 AdressTo AdressFrom NofBytes Func args... CS, where
// a zero argument byte goes out as 00 01, NofBytes counts every byte of the
// frame and CS makes the exclusive-or of the whole frame zero.
class clsHalvexMsg : public QObject
{
    Q_OBJECT
public:
    static constexpr int kBufferSize = 255;

    struct FrameRecord {
        quint8 Preamble1 = 0;
        quint8 Preamble2 = 0;
        quint8 AdressTo = 0;
        quint8 AdressFrom = 0;
        quint8 NofBytes = 0;
        quint8 Func = 0;
        std::array<quint8, kBufferSize> Arguments{};
        quint8 CS = 0;
        quint8 NofArguments = 0;
        bool CSOK = false;
        std::array<quint8, kBufferSize> Buffer{};
    };

    // vSendString writes one frame to the serial link (the application's SendString).
    clsHalvexMsg(IEventLoop* vcLoop, std::function<bool(const QByteArray&)> vSendString, QObject* vParent = nullptr);
    ~clsHalvexMsg() override;

    void ClearSendBuffer();
    void ClearRecieveBuffer();
    // Appends the items of a comma list ("0x0A,&H0B,12") as argument bytes; throws Overflow / Subscript errors.
    void AddArguments(const QString& vsArguments);
    void RemoveArgument(qint16 vlIndex);
    // The senders throw a run-time error while a request waits for its answer
    // (an event handler inside the wait must not start a second exchange).
    void SendFrame();
    void Send(quint8 vbyFunc, const QString& vsArguments);
    bool SendAndWait(quint8 vbyFunc, const QString& vsArguments, qint32& rlTimeout);
    bool SendFlashData(qint32 vlPage, quint8 vbyAddress1, quint8 vbyAddress2, quint8 vbyCount, qint32 vlStart,
                       const QByteArray& vcData);
    // Feeds received characters to the frame assembler.
    bool ProcesReceivedString(const QByteArray& vcReceived);

    quint8 DeviceAddress() const { return mcSend.AdressTo; }
    void SetDeviceAddress(quint8 vbyValue) { mcSend.AdressTo = vbyValue; }
    quint8 HostAddress() const { return mcSend.AdressFrom; }
    void SetHostAddress(quint8 vbyValue) { mcSend.AdressFrom = vbyValue; }
    quint8 SendPreamble1() const { return mcSend.Preamble1; }
    void SetSendPreamble1(quint8 vbyValue) { mcSend.Preamble1 = vbyValue; }
    quint8 SendPreamble2() const { return mcSend.Preamble2; }
    void SetSendPreamble2(quint8 vbyValue) { mcSend.Preamble2 = vbyValue; }

    quint8 SendAdressTo() const { return mcSend.AdressTo; }
    quint8 SendAdressFrom() const { return mcSend.AdressFrom; }
    quint8 SendNofBytes() const { return mcSend.NofBytes; }
    quint8 SendFunc() const { return mcSend.Func; }
    quint8 SendNofArguments() const { return mcSend.NofArguments; }
    quint8 SendCS() const { return mcSend.CS; }
    bool SendCSOK() const { return mcSend.CSOK; }
    quint8 SendArguments(int vlIndex) const;
    quint8 SendBuffer(int vlIndex) const;

    quint8 ReceivePreamble1() const { return mcReceive.Preamble1; }
    void SetReceivePreamble1(quint8 vbyValue) { mcReceive.Preamble1 = vbyValue; }
    quint8 ReceivePreamble2() const { return mcReceive.Preamble2; }
    void SetReceivePreamble2(quint8 vbyValue) { mcReceive.Preamble2 = vbyValue; }
    quint8 ReceiveAdressTo() const { return mcReceive.AdressTo; }
    quint8 ReceiveAdressFrom() const { return mcReceive.AdressFrom; }
    quint8 ReceiveNofBytes() const { return mcReceive.NofBytes; }
    quint8 ReceiveFunc() const { return mcReceive.Func; }
    quint8 ReceiveNofArguments() const { return mcReceive.NofArguments; }
    quint8 ReceiveCS() const { return mcReceive.CS; }
    bool ReceiveCSOK() const { return mcReceive.CSOK; }
    quint8 ReceiveByte() const { return mbyReceiveByte; }
    // One reply argument; an index of 255 or more gives 0.
    quint8 ReceiveArguments(int vlIndex) const;
    quint8 ReceiveBuffer(int vlIndex) const;

    void StopComSending() { mbSending = false; }
    void StartComSending() { mbSending = true; }
    bool IsSending() const { return mbSending; }

    // "0x0A" for 10, "0xFF" for 255.
    static QString ByteToHexArgument(quint8 vbyValue);
    // "0x41,0x42," for "AB": every character code as an item, each followed by a comma.
    static QString StringToArgumentList(const QString& vsText);

signals:
    void MessageReceived();
    void MessageSend();

private:
    void AddArgumentByte(qint64 vlValue);
    bool AddReceivedByte(quint8 vbyValue);
    void CompleteFrame();
    bool WaitForReply(quint32 vlDeadline);
    // A request made while another waits for its answer would take that answer: refused.
    void RefuseWhileWaiting() const;

    IEventLoop* mcLoop;
    std::function<bool(const QByteArray&)> mSendString;
    FrameRecord mcSend;
    FrameRecord mcReceive;
    bool mbSending = true;
    QByteArray mcPendingInput;
    quint8 mbyReceiveByte = 0;
    bool mbZeroPending = false;
    bool mbReceived = false;
    bool mbWaiting = false;
};
