#pragma once

#include <QString>
#include <QStringList>

// Sample upload files of every type the program can send to the display, so
// the upload paths can be tried without the maker's files: the four warning
// databases (.ssl .sfl .usl .ufl), the display images (.kvt with its "KVT"
// signature, .kvt_sa, .kvt_snd) and the Memory Display firmware (.kvt_md), a
// text file of hex lines for the bootloader.
class clsSimSamples
{
public:
    // Writes "sample.<ext>" for each type into vsDirectory (created when missing).
    // Returns the files written; on failure rsError names the file at fault.
    static QStringList Write(const QString& vsDirectory, QString& rsError);

    // The Memory Display firmware file: an "MD " header line, one hex line per
    // bootloader record of vlProgramSize bytes of program, the end record, "4853".
    static QByteArray FirmwareFile(int vlProgramSize);
};
