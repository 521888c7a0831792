#pragma once

#include "export/IDataFile.h"

#include <QString>
#include <array>

// The eight kinds of file the program sends to the display: the four warning
// databases and the four software images.
enum class UploadType { KVTCC, SSL, SFL, USL, UFL, KVTSA, KVTMD, KVTSND };

// One upload file type as the file dialogs and the settings see it. Upload
// files are only ever read, so SaveToFile writes nothing. Every type is one
// row of Table(); the named classes (clsUpgradeSSL …) only pick their row.
class clsUpgradeFile : public IDataFile
{
public:
    struct Row {
        UploadType Type;
        const char* Id;
        const char* Editor;
        qint16 Index; // key of the type's last file in the settings, and of its text box
        const char* Filter;
        const char* Option; // the command line's option that names a file of the type
    };

    static const std::array<Row, 8>& Table();
    static const Row& Of(UploadType vType);

    explicit clsUpgradeFile(UploadType vType) : mrRow(Of(vType)) {}

    bool EditorIsAvailible() override { return true; }
    bool SaveToFile(const QString& vsFileName, clsRecordCollection& rcRecords) override;
    QString FileFilter() override { return QString::fromLatin1(mrRow.Filter); }
    QString EditorName() override { return QString::fromLatin1(mrRow.Editor); }
    qint32 GetIndex() override { return mrRow.Index; }
    QString GetIdString() override { return QString::fromLatin1(mrRow.Id); }

    UploadType Type() const { return mrRow.Type; }

private:
    const Row& mrRow;
};
