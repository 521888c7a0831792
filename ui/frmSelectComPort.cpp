#include "ui/frmSelectComPort.h"

#include "link/clsUsbPortSearch.h"
#include "ui_frmSelectComPort.h"

frmSelectComPort::frmSelectComPort(const QList<IRegistry::SerialDevice>& vcDevices, QWidget* vcParent)
    : QDialog(vcParent)
    , ui(std::make_unique<Ui::frmSelectComPort>())
{
    ui->setupUi(this);
    connect(ui->cmdOk, &QPushButton::clicked, this, &frmSelectComPort::cmdOk_Click);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &frmSelectComPort::cmdCancel_Click);
    Form_Load(vcDevices);
}

frmSelectComPort::~frmSelectComPort() = default;

// Windows names its ports COMn, which Com1 to Com9 already cover; a device
// named by path is listed after them.
void frmSelectComPort::Form_Load(const QList<IRegistry::SerialDevice>& vcDevices)
{
    ui->cboComport->clear();
    for (int i = 1; i <= 9; ++i)
        ui->cboComport->addItem(QStringLiteral("Com") + QString::number(i), QString::number(i));
    for (const IRegistry::SerialDevice& lcDevice : vcDevices) {
        if (!lcDevice.Port.contains(QLatin1Char('/')))
            continue;
        QString lsText = lcDevice.Port;
        if (clsUsbPortSearch::IsKvtInterface(lcDevice))
            lsText += QStringLiteral("  (KVT USB interface)");
        else if (!lcDevice.Description.isEmpty())
            lsText += QStringLiteral("  (") + lcDevice.Description + QLatin1Char(')');
        ui->cboComport->addItem(lsText, lcDevice.Port);
    }
}

void frmSelectComPort::SetComport(const QString& vsPort)
{
    int llIndex = ui->cboComport->findData(vsPort);
    if (llIndex < 0) {
        ui->cboComport->addItem(vsPort, vsPort);
        llIndex = ui->cboComport->count() - 1;
    }
    ui->cboComport->setCurrentIndex(llIndex);
}

QString frmSelectComPort::GetComport() const
{
    return ui->cboComport->currentData().toString();
}

void frmSelectComPort::cmdOk_Click()
{
    mbOkPressed = true;
    accept();
}

void frmSelectComPort::cmdCancel_Click()
{
    mbOkPressed = false;
    reject();
}
