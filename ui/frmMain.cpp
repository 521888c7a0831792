#include "ui/frmMain.h"

#include "app/clsApplication.h"
#include "app/clsSettings.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "platform/Err.h"
#include "platform/IUserDialogs.h"
#include "ui/clsRecordTableModel.h"
#include "upload/clsUpgradeFile.h"
#include "ui/frmAbout.h"
#include "ui_frmMain.h"

#include <QCloseEvent>
#include <QFontMetrics>
#include <QHeaderView>
#include <QLabel>
#include <QTimer>

namespace {
// How long a click waits before it looks again whether the detection round is over.
constexpr int kRetryMs = 20;
// Room beside a cell's text, as the grid draws it.
constexpr int kCellMargin = 12;
}

frmMain::frmMain(QWidget* vcParent)
    : QMainWindow(vcParent)
    , ui(std::make_unique<Ui::frmMain>())
{
    ui->setupUi(this);
    mcStatusLine = new QLabel(this);
    mcStatusLine->setObjectName(QStringLiteral("lblStatusLine"));
    mcStatusLine->setTextInteractionFlags(Qt::TextSelectableByMouse);
    ui->stsStatus->addWidget(mcStatusLine, 1);
    mcBars[int(Bar::Big)].Attach(ui->pBarBig);
    mcBars[int(Bar::Small)].Attach(ui->pBarSmall);
    mcBars[int(Bar::Download)].Attach(ui->ProgressBarDownload);
    ui->flexGrid->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
    ui->flexGrid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    // The first column already numbers the rows.
    ui->flexGrid->verticalHeader()->hide();
}

frmMain::~frmMain() = default;

void frmMain::Attach(clsApplication& rcApplication)
{
    mcApp = &rcApplication;
    mcModel = new clsRecordTableModel(rcApplication.Records(), rcApplication.Selection(), this);
    ui->flexGrid->setModel(mcModel);
    const clsRecordSelection& lcSelection = rcApplication.Selection();
    ui->cheRitRegistratie->setChecked(lcSelection.cheRitRegistratie);
    ui->chePoliceCheck->setChecked(lcSelection.chePoliceCheck);
    ui->cheRitRegistratieTankstop->setChecked(lcSelection.cheRitRegistratieTankstop);
    ui->chePoliceCheckTc->setChecked(lcSelection.chePoliceCheckTc);
    ui->cheDebugRoute->setChecked(lcSelection.cheDebugRoute);
    ui->cheDebugKmCorrection->setChecked(lcSelection.cheDebugKmCorrection);
    ui->cheShowRoute->setChecked(lcSelection.cheShowRoute);
    ConnectControls();
}

void frmMain::ConnectControls()
{
    connect(ui->cmdDownload, &QPushButton::clicked, this,
            [this]() { RunFramed([this](clsError& rcError) { mcApp->ImportDataFromDisplay(rcError); }); });
    ConnectFilterBox(ui->cheRitRegistratie, &clsRecordSelection::cheRitRegistratie);
    ConnectFilterBox(ui->chePoliceCheck, &clsRecordSelection::chePoliceCheck);
    ConnectFilterBox(ui->cheRitRegistratieTankstop, &clsRecordSelection::cheRitRegistratieTankstop);
    ConnectFilterBox(ui->chePoliceCheckTc, &clsRecordSelection::chePoliceCheckTc);
    ConnectFilterBox(ui->cheDebugRoute, &clsRecordSelection::cheDebugRoute);
    ConnectFilterBox(ui->cheDebugKmCorrection, &clsRecordSelection::cheDebugKmCorrection);
    connect(ui->cheShowRoute, &QCheckBox::clicked, this, &frmMain::cheShowRoute_Click);
    connect(ui->cmdSaveRouteAndPoliceTable, &QPushButton::clicked, this, &frmMain::cmdSaveRouteAndPoliceTable_Click);
    connect(ui->cmdClearRouteAndPoliceTable, &QPushButton::clicked, this, &frmMain::cmdClearRouteAndPoliceTable_Click);
    for (QPushButton* lcClear : {ui->cmdClearFlash, ui->cmdClearKvtDisplay})
        connect(lcClear, &QPushButton::clicked, this, [this]() { Forward([this]() { mcApp->clearDisplay(); }); });
    ConnectUploadControls();
    for (QPushButton* lcPlaceholder : {ui->cmdExportRouteAndPoliceToExcel, ui->cmdExportToExcelStopAndFalseList,
                                       ui->cmdRetreiveSpotAndFalseList, ui->cmdSaveSpotAndFalseList})
        connect(lcPlaceholder, &QPushButton::clicked, this, &frmMain::NotImplemented);
    connect(ui->cmdExit, &QPushButton::clicked, this, &QWidget::close);
    connect(ui->mnu_ExportAs, &QAction::triggered, this, &frmMain::mnu_ExportAs_Click);
    connect(ui->mnu_Exit, &QAction::triggered, this, &QWidget::close);
    connect(ui->mnu_MainCom, &QAction::triggered, this, [this]() { mcApp->GetCorrectComPortFromUser(); });
    connect(ui->mnu_About, &QAction::triggered, this, &frmMain::mnu_About_Click);
}

// The upload click handlers bring their own frame and boxes; the window only
// forwards them. Choosing a file talks to no display.
void frmMain::ConnectUploadControls()
{
    const QList<QPair<QPushButton*, UploadType>> lcSelects = {
        {ui->cmdSelectFileSSL, UploadType::SSL}, {ui->cmdSelectFileSFL, UploadType::SFL},
        {ui->cmdSelectFileUSL, UploadType::USL}, {ui->cmdSelectFileUFL, UploadType::UFL},
        {ui->cmdSelectKVTCC, UploadType::KVTCC}, {ui->cmdSelectKVTSA, UploadType::KVTSA},
        {ui->cmdSelectKVTSND, UploadType::KVTSND}, {ui->cmdSelectKVTMD, UploadType::KVTMD},
    };
    for (const auto& lcSelect : lcSelects) {
        const UploadType lType = lcSelect.second;
        connect(lcSelect.first, &QPushButton::clicked, this, [this, lType]() { mcApp->GetNewFileNameForUpload(lType); });
    }
    const QList<QPair<QCheckBox*, UploadType>> lcTicks = {
        {ui->chkSelectFileSSL, UploadType::SSL}, {ui->chkSelectFileSFL, UploadType::SFL},
        {ui->chkSelectFileUSL, UploadType::USL}, {ui->chkSelectFileUFL, UploadType::UFL},
        {ui->chkSelectKVTCC, UploadType::KVTCC}, {ui->chkSelectKVTSA, UploadType::KVTSA},
        {ui->chkSelectKVTSND, UploadType::KVTSND},
    };
    for (const auto& lcTick : lcTicks) {
        const UploadType lType = lcTick.second;
        lcTick.first->setChecked(mcApp->UploadSelection().Ticked(lType));
        connect(lcTick.first, &QCheckBox::toggled, this,
                [this, lType](bool vbTicked) { mcApp->UploadSelection().SetTicked(lType, vbTicked); });
    }
    connect(ui->cmdUploadDatabases, &QPushButton::clicked, this,
            [this]() { Forward([this]() { mcApp->cmdUploadDatabases_Click(); }); });
    connect(ui->cmdInstallKVTSoftware, &QPushButton::clicked, this,
            [this]() { Forward([this]() { mcApp->cmdInstallKVTSoftware_Click(); }); });
    connect(ui->cmdInstallKVTMemoryDisplay, &QPushButton::clicked, this, [this]() {
        Forward([this]() {
            mbFirmwareRunning = true;
            mcApp->cmdInstallKVTMemoryDisplay_Click();
            mbFirmwareRunning = false;
        });
    });
}

// The six selection boxes all refill the grid the same way.
void frmMain::ConnectFilterBox(QCheckBox* vcBox, bool clsRecordSelection::*vField)
{
    connect(vcBox, &QCheckBox::clicked, this, [this, vField](bool vbChecked) {
        mcApp->Selection().*vField = vbChecked;
        UpdateFiler();
    });
}

void frmMain::UpdateFiler()
{
    RunFramed([this](clsError& rcError) {
        mcApp->CheckForOperatingSystem(rcError);
        if (!rcError.IsError())
            mcApp->ShowRecords(rcError);
    });
}

// The route column follows the box, so the rows are made again after the routes.
void frmMain::cheShowRoute_Click()
{
    mcApp->Selection().cheShowRoute = ui->cheShowRoute->isChecked();
    RunFramed([this](clsError& rcError) {
        mcApp->CaluclateRoutePostcodes(rcError);
        if (!rcError.IsError())
            mcApp->ShowRecords(rcError);
    });
}

// Saving talks to no display, so the window stays as it is.
void frmMain::cmdSaveRouteAndPoliceTable_Click()
{
    clsError lcError;
    Err::Trap([&]() { mcApp->SaveToDisk(lcError); });
    mcApp->HandleError(lcError);
}

// The records for a spreadsheet, a map or a mileage register; like Save it
// talks to no display, so the window stays as it is.
void frmMain::mnu_ExportAs_Click()
{
    clsError lcError;
    Err::Trap([&]() { mcApp->ExportAs(lcError); });
    mcApp->HandleError(lcError);
}

void frmMain::cmdClearRouteAndPoliceTable_Click()
{
    if (mcApp->Dialogs().MsgBox(QStringLiteral("Are you sure you want to clear the table?"), MsgButtons::YesNo,
                                MsgIcon::Question, clsApplication::ApplicationName())
        != MsgResult::Yes)
        return;
    RunFramed([this](clsError&) { mcApp->ClearRitAndPoliceTableInformation(); });
}

void frmMain::NotImplemented()
{
    mcApp->Dialogs().MsgBox(QStringLiteral("Functionality not implemented"), MsgButtons::OK, MsgIcon::Information,
                            clsApplication::ApplicationName());
}

void frmMain::mnu_About_Click()
{
    frmAbout lcAbout(this);
    lcAbout.exec();
}

void frmMain::RunFramed(const std::function<void(clsError&)>& vOperation)
{
    if (LinkBusy([this, vOperation]() { RunFramed(vOperation); }))
        return;
    mcApp->RunOperation(vOperation);
    AfterOperation();
}

// For the click handlers that run their own frame.
void frmMain::Forward(const std::function<void()>& vAction)
{
    if (LinkBusy([this, vAction]() { Forward(vAction); }))
        return;
    vAction();
    AfterOperation();
}

// A detection round lets window events run while it waits on the display; a
// click that comes in then is run as soon as the round is over. A click
// inside a running operation cannot happen with the window disabled, and is
// dropped if it does.
bool frmMain::LinkBusy(const std::function<void()>& vRetry)
{
    if (mcApp->DetectionRoundRunning()) {
        QTimer::singleShot(kRetryMs, this, vRetry);
        return true;
    }
    return mcApp->CommunicationIsRunning();
}

// The frame empties the grid first; whatever the operation did, the records
// that are left are shown again. A close asked for meanwhile is done now.
void frmMain::AfterOperation()
{
    if (mcModel->RecordRows() == 0 && mcApp->Records().Count() > 0) {
        RecordsChanged();
        AutoSizeTheColumns();
    }
    if (mbCloseRequested) {
        mbCloseRequested = false;
        QTimer::singleShot(0, this, &QWidget::close);
    }
}

void frmMain::changeEvent(QEvent* vcEvent)
{
    QMainWindow::changeEvent(vcEvent);
    if (vcEvent->type() == QEvent::ActivationChange && isActiveWindow() && !mbActivated)
        Form_Activate();
}

// Without a window manager a window is never activated; being shown is as good.
void frmMain::showEvent(QShowEvent* vcEvent)
{
    QMainWindow::showEvent(vcEvent);
    if (!mbActivated)
        Form_Activate();
}

// The first activation sets the tab keys, the caption, the empty grid and
// the upload file boxes.
void frmMain::Form_Activate()
{
    mbActivated = true;
    static const char* const kKeys[] = {"1A", "4A", "3A", "2A"};
    for (int i = 0; i < ui->tbsSelect->count(); ++i)
        ui->tbsSelect->tabBar()->setTabData(i, QString::fromLatin1(kKeys[i]));
    ui->tbsSelect->setCurrentIndex(0);
    setWindowTitle(clsApplication::ApplicationName());
    mcModel->FillWithBlankRows(kFirstGridRows - 1);
    if (!mcApp)
        return;
    mcApp->ShowLastUploadFiles();
}

QString frmMain::TabKey(int vlTab) const
{
    return ui->tbsSelect->tabBar()->tabData(vlTab).toString();
}

// Closing waits for a running operation to end; only unsaved records are asked
// about. The firmware stream may run for minutes, so the user may stop it: the
// display then stays in its bootloader, which the stream itself reports.
void frmMain::closeEvent(QCloseEvent* vcEvent)
{
    if (mcApp && mcApp->CommunicationIsRunning()) {
        vcEvent->ignore();
        if (mbFirmwareRunning && !AskToStopFirmware())
            return;
        mbCloseRequested = true;
        return;
    }
    if (!AskToQuit()) {
        vcEvent->ignore();
        return;
    }
    vcEvent->accept();
}

bool frmMain::AskToStopFirmware()
{
    if (mcApp->Dialogs().MsgBox(QStringLiteral("The Memory Display firmware is being updated.\r\nStop the update?"),
                                MsgButtons::YesNo, MsgIcon::Question, clsApplication::ApplicationName())
        != MsgResult::Yes)
        return false;
    mcApp->RequestCancel();
    return true;
}

bool frmMain::AskToQuit()
{
    if (!mcApp || mcApp->DataSaved())
        return true;
    if (mcApp->Dialogs().MsgBox(QStringLiteral("Information is not saved.\r\nAre you sure you want to quite?"),
                                MsgButtons::YesNo, MsgIcon::Question, clsApplication::ApplicationName())
        != MsgResult::Yes)
        return false;
    mcApp->SetDataSaved(true);
    return true;
}

void frmMain::SetStatusLine(const QString& vsText)
{
    mcStatusLine->setText(vsText);
}

IProgressBar& frmMain::ProgressBar(Bar vBar)
{
    return mcBars[int(vBar)];
}

void frmMain::EnableButtons(bool vbEnabled)
{
    ui->tbsSelect->tabBar()->setEnabled(vbEnabled);
    for (QPushButton* lcButton : findChildren<QPushButton*>()) {
        if (lcButton->objectName().startsWith(QLatin1String("cmd")))
            lcButton->setEnabled(vbEnabled);
    }
}

// Beyond the menus and the grid, the selection and upload boxes: a click on
// them starts an operation of its own.
void frmMain::EnableMenu(bool vbEnabled)
{
    for (QMenu* lcMenu : {ui->mnu_File, ui->mnu_Setup, ui->mnu_Help})
        lcMenu->menuAction()->setEnabled(vbEnabled);
    ui->mnu_MainCom->setEnabled(mcApp == nullptr || !mcApp->UsbComport().Found);
    ui->flexGrid->setEnabled(vbEnabled);
    for (QCheckBox* lcBox : findChildren<QCheckBox*>())
        lcBox->setEnabled(vbEnabled);
    for (QLineEdit* lcBox : findChildren<QLineEdit*>())
        lcBox->setEnabled(vbEnabled);
}

void frmMain::ClearGrid()
{
    mcModel->Clear();
}

void frmMain::RecordsChanged()
{
    mcModel->Reload();
}

void frmMain::RecordsCleared()
{
    mcModel->Clear(kClearedGridRows - 1);
}

// Widths from the longest text of each column: the font is measured once per
// column, not once per cell.
void frmMain::AutoSizeTheColumns()
{
    const QFontMetrics lcMetrics(ui->flexGrid->font());
    const QFontMetrics lcHeaderMetrics(ui->flexGrid->horizontalHeader()->font());
    const QStringList lcLongest = mcModel->LongestTexts();
    for (int c = 0; c < lcLongest.size(); ++c) {
        const QString lsHeader = mcModel->headerData(c, Qt::Horizontal, Qt::DisplayRole).toString();
        const int llWidth = qMax(lcMetrics.horizontalAdvance(lcLongest.at(c)), lcHeaderMetrics.horizontalAdvance(lsHeader));
        ui->flexGrid->setColumnWidth(c, llWidth + kCellMargin);
    }
}

QLineEdit* frmMain::UploadFileBox(int vlIndex) const
{
    switch (vlIndex) {
    case 0:
        return ui->txtSelectKVTCC;
    case 1:
        return ui->txtUpdateDbSSL;
    case 2:
        return ui->txtUpdateDbSFL;
    case 3:
        return ui->txtUpdateDbUSL;
    case 4:
        return ui->txtUpdateDbUFL;
    case 10:
        return ui->txtSelectKVTSA;
    case 11:
        return ui->txtSelectKVTMD;
    case 12:
        return ui->txtSelectKVTSND;
    default:
        return nullptr;
    }
}

QString frmMain::UploadFileText(int vlIndex) const
{
    const QLineEdit* lcBox = UploadFileBox(vlIndex);
    return lcBox ? lcBox->text() : QString();
}

void frmMain::SetUploadFileText(int vlIndex, const QString& vsFileName)
{
    if (QLineEdit* lcBox = UploadFileBox(vlIndex))
        lcBox->setText(vsFileName);
}

void frmMain::SetMdWarningHighlighted(bool vbHighlighted)
{
    ui->txtMdWarning->setStyleSheet(vbHighlighted ? QStringLiteral("QPlainTextEdit { background: #ffd24d; }") : QString());
}

void frmMain::GiveUpWork()
{
    if (mcApp)
        mcApp->RequestCancel();
}
