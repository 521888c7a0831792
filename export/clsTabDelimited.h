#pragma once

#include "export/IDataFile.h"

class clsHalvexRecord;
class QIODevice;

// The records as a tab-delimited text file for a spreadsheet or a database:
// no header, one CR LF line per trip, alarm or tank stop, Windows-1252.
class clsTabDelimited : public IDataFile
{
public:
    bool EditorIsAvailible() override { return true; }
    // A run-time error (path not found, access denied, disk full) is raised as
    // clsRuntimeError; an earlier file of the same name is then left as it was.
    bool SaveToFile(const QString& vsFileName, clsRecordCollection& rcRecords) override;
    QString FileFilter() override { return QStringLiteral("Text file (tab delimited)(*.txt)|*.txt"); }
    QString EditorName() override { return QStringLiteral("Tab delimited text file"); }
    qint32 GetIndex() override { return 9; }
    QString GetIdString() override { return QStringLiteral("TXT"); }

    // The line of one record, CR LF included; empty for a record the file leaves out.
    static QByteArray FileLine(clsHalvexRecord& rcRecord);

private:
    void WriteRecords(const QString& vsFileName, clsRecordCollection& rcRecords);
};
