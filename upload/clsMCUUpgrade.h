#pragma once

#include "app/clsStatus.h"
#include "data/clsFlashMemInfo.h"

#include <QByteArray>
#include <QString>

class clsApplication;
class clsError;

// Writes one file, byte for byte, into the display's flash from a given page
// on, and hands back the page where the next file may begin. The only writer
// of display flash: the database and software uploads call it once per file
// and chain the pages from one call to the next.
class clsMCUUpgrade
{
public:
    explicit clsMCUUpgrade(clsApplication& rcApp);

    // Where the status texts and both bars go; null gives them back.
    void SetStatus(clsStatus* vcStatus) { mcStatus = vcStatus; }
    void SetFilename(const QString& vsFilename) { msFilename = vsFilename; }
    QString Filename() const { return msFilename; }
    qint32 getFirstPage() const { return mcInfo.FirstPage() + 1; }

    // On entry the page the file begins at; on return, after a successful
    // write, the page after the last page written.
    void StartUpLoad(clsError& rcError, qint32& rlStartPage);

    // After the write, read every page back and compare it with the file.
    void SetVerify(bool vbVerify) { mbVerify = vbVerify; }
    // What the last upload put on the display (the deliberately lost last byte not counted).
    qint32 BytesWritten() const { return mlBytesWritten; }

private:
    void ReadUploadFile(clsError& rcError);
    void CheckDisplayIsEmpty(clsError& rcError);
    void UploadData(clsError& rcError, qint32 vlStartPage, qint32& rlNextPage);
    bool CheckGeometry(clsError& rcError);
    // One write message; false after telling the user that it failed.
    bool SendPart(clsError& rcError, qint32 vlPage, qint32 vlPageSize, qint32 vlOffset, qint32 vlCount);
    void VerifyUpload(clsError& rcError, qint32 vlStartPage);
    QByteArray ReadPart(clsError& rcError, qint32 vlPage, qint32 vlAddress, qint32 vlCount);
    clsStatus& Status() { return mcStatus ? *mcStatus : mcNoStatus; }

    clsApplication& mrApp;
    clsStatus* mcStatus = nullptr;
    clsStatus mcNoStatus;
    QString msFilename;
    QString msDisplayId;
    QByteArray mcData;
    clsFlashMemInfo mcInfo;
    bool mbVerify = false;
    qint32 mlBytesWritten = 0;
};
