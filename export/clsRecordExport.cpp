#include "export/clsRecordExport.h"

#include "app/clsApplication.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "export/ExportFiles.h"

bool clsRecordExport::SaveToFile(const QString& vsFileName, clsRecordCollection& rcRecords)
{
    if (clsApplication* lcApplication = clsApplication::Instance())
        lcApplication->Status().SetStatusString(QStringLiteral("Save to file"));
    msNote.clear();
    msTarget = vsFileName;
    ExportFiles::SaveWhole(vsFileName, Render(rcRecords), GetIdString());
    return true;
}

std::vector<clsHalvexRecord*> clsRecordExport::Rows(clsRecordCollection& rcRecords) const
{
    std::vector<clsHalvexRecord*> lcRows;
    for (int i = 1; i <= rcRecords.Count(); ++i) {
        clsHalvexRecord& lcRecord = rcRecords.Item(i);
        if (mcContext.Selection.Admits(lcRecord))
            lcRows.push_back(&lcRecord);
    }
    return lcRows;
}

std::vector<clsHalvexRecord*> clsRecordExport::ValidRecords(clsRecordCollection& rcRecords)
{
    std::vector<clsHalvexRecord*> lcRecords;
    for (int i = 1; i <= rcRecords.Count(); ++i)
        if (rcRecords.Item(i).IsValid())
            lcRecords.push_back(&rcRecords.Item(i));
    return lcRecords;
}
