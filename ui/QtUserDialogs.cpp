#include "ui/QtUserDialogs.h"

#include "platform/IRegistry.h"
#include "ui/frmSelectComPort.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

namespace {
QMessageBox::Icon BoxIcon(MsgIcon vIcon)
{
    switch (vIcon) {
    case MsgIcon::Critical:
        return QMessageBox::Critical;
    case MsgIcon::Question:
        return QMessageBox::Question;
    case MsgIcon::Exclamation:
        return QMessageBox::Warning;
    case MsgIcon::Information:
        return QMessageBox::Information;
    case MsgIcon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons BoxButtons(MsgButtons vButtons)
{
    switch (vButtons) {
    case MsgButtons::OKCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case MsgButtons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case MsgButtons::OK:
        break;
    }
    return QMessageBox::Ok;
}

MsgResult Result(int vlButton)
{
    switch (vlButton) {
    case QMessageBox::Cancel:
        return MsgResult::Cancel;
    case QMessageBox::Yes:
        return MsgResult::Yes;
    case QMessageBox::No:
        return MsgResult::No;
    default:
        return MsgResult::OK;
    }
}
}

// The program's texts break lines with CR LF; a box shows one line break for each.
MsgResult QtUserDialogs::MsgBox(const QString& vsText, MsgButtons vButtons, MsgIcon vIcon, const QString& vsTitle)
{
    QString lsText = vsText;
    lsText.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    QMessageBox lcBox(BoxIcon(vIcon), vsTitle, lsText, BoxButtons(vButtons), mcParent);
    return Result(lcBox.exec());
}

QString QtUserDialogs::ShowSave(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir)
{
    const QString lsStart = vsInitDir.isEmpty() ? vsFileName : QDir(vsInitDir).filePath(QFileInfo(vsFileName).fileName());
    // The program asks its own overwrite question.
    return QDir::toNativeSeparators(QFileDialog::getSaveFileName(mcParent, QString(), lsStart, QtFilter(vsFilter),
                                                                 nullptr, QFileDialog::DontConfirmOverwrite));
}

QString QtUserDialogs::ShowOpen(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir)
{
    const QString lsStart = vsInitDir.isEmpty() ? vsFileName : QDir(vsInitDir).filePath(QFileInfo(vsFileName).fileName());
    return QDir::toNativeSeparators(QFileDialog::getOpenFileName(mcParent, QString(), lsStart, QtFilter(vsFilter)));
}

bool QtUserDialogs::SelectComPort(QString& rsPort)
{
    frmSelectComPort lcDialog(mcRegistry ? mcRegistry->SerialDevices() : QList<IRegistry::SerialDevice>(), mcParent);
    lcDialog.SetComport(rsPort);
    lcDialog.exec();
    if (!lcDialog.OkPressed())
        return false;
    rsPort = lcDialog.GetComport();
    return true;
}

void QtUserDialogs::SetBusyCursor(bool vbBusy)
{
    if (vbBusy)
        QApplication::setOverrideCursor(Qt::WaitCursor);
    else
        QApplication::restoreOverrideCursor();
}

QString QtUserDialogs::QtFilter(const QString& vsFilter)
{
    const QStringList lcParts = vsFilter.split(QLatin1Char('|'));
    QStringList lcFilters;
    for (int i = 0; i + 1 < lcParts.size(); i += 2) {
        const QString lsPattern = lcParts.at(i + 1).trimmed();
        QString lsName = lcParts.at(i).trimmed();
        if (!lsName.contains(QLatin1Char('(') + lsPattern + QLatin1Char(')')))
            lsName += QStringLiteral(" (") + lsPattern + QLatin1Char(')');
        lcFilters << lsName;
    }
    return lcFilters.join(QStringLiteral(";;"));
}
