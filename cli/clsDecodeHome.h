#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>

// The home a decode runs in. Decoding deletes each page file it has read and
// writes the log and the settings beside them, so the page files of the
// user's directory (and the place table beside them, if any) are copied into
// a temporary directory of their own first. It is removed when the run ends,
// and also when the run is stopped by SIGINT or SIGTERM. Texts that name a
// copy name the user's file instead.
class clsDecodeHome
{
public:
    clsDecodeHome();
    ~clsDecodeHome();
    clsDecodeHome(const clsDecodeHome&) = delete;
    clsDecodeHome& operator=(const clsDecodeHome&) = delete;

    // Makes the home and copies the files of vsDirectory; false with rsError saying why.
    bool Prepare(const QString& vsDirectory, QString& rsError);
    QString Path() const;
    // vsText with every path of a copy replaced by the path of the user's file.
    QString UserNames(const QString& vsText) const;
    void Remove();

private:
    void RemoveOnSignal(const QStringList& vcNames);

    std::unique_ptr<QTemporaryDir> mcDir;
    // The copy's path and the user's file, both as the user sees paths.
    QList<QPair<QString, QString>> mcCopies;
};
