#pragma once

#include <QString>

class clsRecordCollection;

// What every kind of file the program writes or reads for the user answers:
// the export writers and the upload file types. The file dialogs take their
// filter from here, and the application asks whether the type can be used at
// all on this machine. The slot order is part of the interface.
class IDataFile
{
public:
    virtual ~IDataFile() = default;

    virtual bool EditorIsAvailible() = 0;
    // Writes the records (1-based collection); callers do not look at the result.
    virtual bool SaveToFile(const QString& vsFileName, clsRecordCollection& rcRecords) = 0;
    // Description "|" pattern, as the file dialog takes it.
    virtual QString FileFilter() = 0;
    virtual QString EditorName() = 0;
    virtual qint32 GetIndex() = 0;
    virtual QString GetIdString() = 0;
};
