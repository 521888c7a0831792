#pragma once

#include "platform/IRegistry.h"

#include <QDialog>
#include <memory>

namespace Ui {
class frmSelectComPort;
}

// The port dialog of the "Comport" menu: Com1 to Com9 and, where the system
// names its serial devices by path, every device present, the KVT USB
// interface marked. A port is a number ("3") or a device path.
class frmSelectComPort : public QDialog
{
    Q_OBJECT
public:
    frmSelectComPort(const QList<IRegistry::SerialDevice>& vcDevices, QWidget* vcParent = nullptr);
    ~frmSelectComPort() override;

    // Selects the entry of a port; a port not in the list is added for it.
    void SetComport(const QString& vsPort);
    QString GetComport() const;
    bool OkPressed() const { return mbOkPressed; }

private:
    void Form_Load(const QList<IRegistry::SerialDevice>& vcDevices);
    void cmdOk_Click();
    void cmdCancel_Click();

    std::unique_ptr<Ui::frmSelectComPort> ui;
    bool mbOkPressed = false;
};
