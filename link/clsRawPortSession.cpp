#include "link/clsRawPortSession.h"

#include "app/clsApplication.h"
#include "platform/IEventLoop.h"
#include "platform/ISerialPort.h"

clsRawPortSession::clsRawPortSession(clsApplication& rcApp)
    : mrApp(rcApp)
    , mcPort(rcApp.Port())
{
    mrApp.DetachCodec();
}

clsRawPortSession::~clsRawPortSession()
{
    mrApp.AttachCodec();
}

bool clsRawPortSession::Output(const QByteArray& vcData)
{
    if (!mcPort)
        return false;
    if (!mcPort->PortOpen())
        mcPort->SetPortOpen(true);
    return mcPort->Output(vcData);
}

QByteArray clsRawPortSession::Input()
{
    return mcPort ? mcPort->Input() : QByteArray();
}

// Without a port the wait still lasts until the deadline, as a silent line would.
bool clsRawPortSession::WaitForInput(quint32 vlDeadline)
{
    if (mcPort)
        return mcPort->WaitForInput(vlDeadline);
    IEventLoop& lcLoop = mrApp.EventLoop();
    while (qint32(lcLoop.timeGetTime() - vlDeadline) < 0)
        lcLoop.WaitForEvents(vlDeadline);
    return false;
}

void clsRawPortSession::Flush()
{
    if (mcPort)
        mcPort->Flush();
}

void clsRawPortSession::Purge()
{
    if (mcPort)
        mcPort->Purge();
}
