#include "export/clsTabDelimited.h"

#include "app/clsApplication.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "export/ExportFiles.h"
#include "platform/Cp1252.h"

namespace {
const QString kSource = QStringLiteral("clsTabDelimited");

// Hides the save's progress bar on every way out, a failed write included.
class clsBarHider
{
public:
    explicit clsBarHider(clsProgressBarInfo* vcBar) : mcBar(vcBar) {}
    ~clsBarHider()
    {
        if (mcBar)
            mcBar->SetVisible(false);
    }
    clsBarHider(const clsBarHider&) = delete;
    clsBarHider& operator=(const clsBarHider&) = delete;

private:
    clsProgressBarInfo* mcBar;
};
}

QByteArray clsTabDelimited::FileLine(clsHalvexRecord& rcRecord)
{
    if (!rcRecord.IsValid() || !rcRecord.isSaveToFile())
        return {};
    return Cp1252::Encode(rcRecord.GetFullStringWithDelimiterToFile(QStringLiteral("\t"))) + "\r\n";
}

bool clsTabDelimited::SaveToFile(const QString& vsFileName, clsRecordCollection& rcRecords)
{
    clsApplication* lcApplication = clsApplication::Instance();
    clsProgressBarInfo* lcBar = lcApplication ? &lcApplication->Status().BigProgressBarInfo() : nullptr;
    if (lcApplication)
        lcApplication->Status().SetStatusString(QStringLiteral("Save to file"));
    const clsBarHider lcHider(lcBar);
    if (rcRecords.Count() < 1)
        return true;
    if (lcBar) {
        // Min 1 and Count + 1: the bar's percentage uses the raw position, so it shows 100 one record early.
        lcBar->SetMin(1);
        lcBar->SetMax(rcRecords.Count() + 1);
        lcBar->Reset();
        lcBar->SetVisible(true);
    }
    WriteRecords(vsFileName, rcRecords);
    return true;
}

// Written beside the target and renamed over it at the end, so a save that
// fails half-way leaves the earlier export whole.
void clsTabDelimited::WriteRecords(const QString& vsFileName, clsRecordCollection& rcRecords)
{
    clsApplication* lcApplication = clsApplication::Instance();
    QByteArray lcData;
    for (int i = 1; i <= rcRecords.Count(); ++i) {
        lcData += FileLine(rcRecords.Item(i));
        if (lcApplication)
            lcApplication->Status().BigProgressBarInfo().Increment();
    }
    ExportFiles::SaveWhole(vsFileName, lcData, kSource);
}
