#include "app/clsOperation.h"

#include "app/clsApplication.h"
#include "app/clsCommunicationScope.h"
#include "app/clsError.h"
#include "platform/Err.h"
#include "platform/IMainWindow.h"

clsOperation::clsOperation(clsApplication& rcApp, Kind vKind, bool vbHandleError)
    : mrApp(rcApp)
    , mKind(vKind)
    , mbHandleError(vbHandleError)
{
}

clsOutcome clsOperation::Run(const std::function<void(clsError&)>& vOperation)
{
    Begin();
    clsOutcome lcOutcome;
    {
        clsCommunicationScope lcLink(mrApp);
        clsError lcError;
        RunCaught(vOperation, lcError);
        if (lcError.IsError()) {
            lcOutcome.Number = lcError.Error();
            lcOutcome.Description = lcError.Description();
            lcOutcome.Cancelled = lcOutcome.Number == ErrorCode::CancelledByUser;
        }
        if (mbHandleError)
            mrApp.HandleError(lcError);
    }
    End();
    return lcOutcome;
}

// A run-time error is taken in only when the operation had not already set an
// error of its own: the first failure is the one the user must see.
void clsOperation::RunCaught(const std::function<void(clsError&)>& vOperation, clsError& rcError)
{
    Err::Clear();
    try {
        vOperation(rcError);
    } catch (const clsRuntimeError& e) {
        Err::SetPending(e);
    }
    rcError.IsError();
    Err::Clear();
}

void clsOperation::Begin()
{
    mrApp.mbCancelRequested = false;
    mbOutermost = mrApp.mlOperationDepth++ == 0;
    if (!mbOutermost)
        return;
    mbDetectionWasOn = mrApp.AutoDetectionRunning();
    mrApp.StopAutoDetection();
    IMainWindow* lcWindow = mrApp.Platform().MainWindow;
    if (!lcWindow)
        return;
    lcWindow->EnableButtons(false);
    lcWindow->EnableMenu(false);
    if (mKind == Kind::Window)
        lcWindow->ClearGrid();
}

void clsOperation::End()
{
    --mrApp.mlOperationDepth;
    if (!mbOutermost)
        return;
    if (IMainWindow* lcWindow = mrApp.Platform().MainWindow) {
        if (mKind == Kind::Window) {
            lcWindow->AutoSizeTheColumns();
            lcWindow->EnableMenu(true);
            lcWindow->EnableButtons(true);
        } else {
            lcWindow->EnableButtons(true);
            lcWindow->EnableMenu(true);
        }
    }
    // A platform out of timers leaves detection off; the user is told why.
    clsError lcError;
    if (mbDetectionWasOn && !Err::Trap([this]() { mrApp.StartAutoDetection(); }))
        mrApp.HandleError(lcError);
}

clsOutcome clsApplication::RunOperation(const std::function<void(clsError&)>& vOperation)
{
    return clsOperation(*this, clsOperation::Kind::Window, true).Run(vOperation);
}

clsOutcome clsApplication::RunOperationQuietly(const std::function<void(clsError&)>& vOperation)
{
    return clsOperation(*this, clsOperation::Kind::Buttons, false).Run(vOperation);
}
