#pragma once

#include "export/IDataFile.h"
#include "export/clsExportContext.h"

#include <QByteArray>
#include <vector>

class clsHalvexRecord;

// The export formats beyond the tab-delimited file. Each renders the whole
// file in memory and writes it beside the target, renamed over it at the end:
// a failed export destroys nothing. Unlike the tab-delimited file, an export
// holds what the table shows (the selection applies), and an empty selection
// still gives a valid, empty document.
class clsRecordExport : public IDataFile
{
public:
    explicit clsRecordExport(const clsExportContext& vcContext) : mcContext(vcContext) {}

    bool EditorIsAvailible() override { return true; }
    // A run-time error (path not found, access denied, disk full) is raised as clsRuntimeError.
    bool SaveToFile(const QString& vsFileName, clsRecordCollection& rcRecords) override;

    // What the user should be told after the export (records left out); empty when nothing.
    QString Note() const { return msNote; }

protected:
    virtual QByteArray Render(clsRecordCollection& rcRecords) = 0;

    // The rows of the table: valid records the selection admits, in record order.
    std::vector<clsHalvexRecord*> Rows(clsRecordCollection& rcRecords) const;
    // Every valid record, whatever the selection (a map needs the route points of a trip).
    static std::vector<clsHalvexRecord*> ValidRecords(clsRecordCollection& rcRecords);
    const clsExportContext& Context() const { return mcContext; }
    // The file being written, for error texts.
    QString Target() const { return msTarget; }
    void SetNote(const QString& vsNote) { msNote = vsNote; }

private:
    clsExportContext mcContext;
    QString msNote;
    QString msTarget;
};
