#include "ui/frmAbout.h"

#include "app/clsApplication.h"
#include "ui_frmAbout.h"

frmAbout::frmAbout(QWidget* vcParent)
    : QDialog(vcParent)
    , ui(std::make_unique<Ui::frmAbout>())
{
    ui->setupUi(this);
    connect(ui->cmdOk, &QPushButton::clicked, this, &QDialog::accept);
    Form_Initialize();
}

frmAbout::~frmAbout() = default;

QString frmAbout::VersionText(int vlMajor, int vlMinor, int vlRevision)
{
    return QStringLiteral("Version: %1.%2.%3").arg(vlMajor).arg(vlMinor).arg(vlRevision);
}

// The design-time texts are placeholders; what the user sees comes from the program.
void frmAbout::Form_Initialize()
{
    setWindowTitle(clsApplication::ApplicationName());
    ui->lblTxtKVTDesktop->setText(clsApplication::ApplicationName());
    ui->lblVersion->setText(VersionText(CORVANE_VERSION_MAJOR, CORVANE_VERSION_MINOR, CORVANE_VERSION_REVISION));
}
