#pragma once

#include "platform/IUserDialogs.h"

class IRegistry;
class QWidget;

// Message boxes, the file dialogs and the port dialog of the window program.
class QtUserDialogs : public IUserDialogs
{
public:
    // vcRegistry lists the serial devices for the port dialog; may be null.
    explicit QtUserDialogs(const IRegistry* vcRegistry) : mcRegistry(vcRegistry) {}
    void SetParent(QWidget* vcParent) { mcParent = vcParent; }

    MsgResult MsgBox(const QString& vsText, MsgButtons vButtons, MsgIcon vIcon, const QString& vsTitle) override;
    QString ShowSave(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir) override;
    QString ShowOpen(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir) override;
    bool SelectComPort(QString& rsPort) override;
    void SetBusyCursor(bool vbBusy) override;

    // "Text files (*.txt)|*.txt|All (*.*)|*.*" in Qt's form: "Text files (*.txt);;All (*.*)".
    static QString QtFilter(const QString& vsFilter);

private:
    const IRegistry* mcRegistry;
    QWidget* mcParent = nullptr;
};
