#include "export/clsExcel.h"

#include "platform/Err.h"

#ifdef Q_OS_WIN
#include <objbase.h>
#ifdef _MSC_VER
#pragma comment(lib, "ole32.lib")
#endif
#endif

namespace {
// Creates and at once releases an "Excel.application" automation object;
// Excel is not asked to quit, it closes when its last reference goes.
bool CanCreateExcel()
{
#ifdef Q_OS_WIN
    CLSID lcClassId;
    if (FAILED(CLSIDFromProgID(L"Excel.application", &lcClassId)))
        return false;
    const HRESULT llInit = CoInitialize(nullptr);
    IDispatch* lcExcel = nullptr;
    const HRESULT llCreated
        = CoCreateInstance(lcClassId, nullptr, CLSCTX_LOCAL_SERVER, IID_IDispatch, reinterpret_cast<void**>(&lcExcel));
    if (SUCCEEDED(llCreated) && lcExcel)
        lcExcel->Release();
    if (SUCCEEDED(llInit))
        CoUninitialize();
    return SUCCEEDED(llCreated) && lcExcel;
#else
    // No spreadsheet automation outside Windows.
    return false;
#endif
}
}

// A failed creation only means "not available": whatever run-time error it
// left is cleared, as leaving the suppressed-error section does.
bool clsExcel::EditorIsAvailible()
{
    const bool lbAvailable = CanCreateExcel();
    Err::Clear();
    return lbAvailable;
}

bool clsExcel::SaveToFile(const QString& vsFileName, clsRecordCollection& rcRecords)
{
    (void)vsFileName;
    (void)rcRecords;
    return false;
}
