#pragma once

#include "platform/IMainWindow.h"
#include "ui/clsQtProgressBar.h"

#include <QMainWindow>
#include <functional>
#include <memory>

namespace Ui {
class frmMain;
}
class QCheckBox;
class QLabel;
class QLineEdit;
class clsApplication;
class clsError;
class clsRecordTableModel;
struct clsRecordSelection;

// The program's main window. It holds no data of its own: every control
// forwards to the application object, each user action inside the core's
// operation frame, and the core tells the window what to show through
// IMainWindow.
class frmMain : public QMainWindow, public IMainWindow
{
    Q_OBJECT
public:
    explicit frmMain(QWidget* vcParent = nullptr);
    ~frmMain() override;

    // The window is made before the application object that it serves.
    void Attach(clsApplication& rcApplication);

    void SetStatusLine(const QString& vsText) override;
    IProgressBar& ProgressBar(Bar vBar) override;
    void EnableButtons(bool vbEnabled) override;
    void EnableMenu(bool vbEnabled) override;
    void ClearGrid() override;
    void RecordsChanged() override;
    void RecordsCleared() override;
    void AutoSizeTheColumns() override;
    QString UploadFileText(int vlIndex) const override;
    void SetUploadFileText(int vlIndex, const QString& vsFileName) override;
    void SetMdWarningHighlighted(bool vbHighlighted) override;
    void GiveUpWork() override;

    // The key of a tab of tbsSelect: "1A" … ; its first character is the page number.
    QString TabKey(int vlTab) const;
    clsRecordTableModel& GridModel() { return *mcModel; }

protected:
    void changeEvent(QEvent* vcEvent) override;
    void showEvent(QShowEvent* vcEvent) override;
    void closeEvent(QCloseEvent* vcEvent) override;

private:
    static constexpr int kFirstGridRows = 14;   // the header row counted
    static constexpr int kClearedGridRows = 12; // header and eleven blank rows

    void Form_Activate();
    void ConnectControls();
    void ConnectUploadControls();
    void ConnectFilterBox(QCheckBox* vcBox, bool clsRecordSelection::*vField);
    QLineEdit* UploadFileBox(int vlIndex) const;

    // One user action inside the operation frame; held back while a detection
    // round waits on the display, refused while another operation runs.
    void RunFramed(const std::function<void(clsError&)>& vOperation);
    void Forward(const std::function<void()>& vAction);
    bool LinkBusy(const std::function<void()>& vRetry);
    void AfterOperation();

    void UpdateFiler();
    void cheShowRoute_Click();
    void cmdSaveRouteAndPoliceTable_Click();
    void cmdClearRouteAndPoliceTable_Click();
    void NotImplemented();
    void mnu_About_Click();
    void mnu_ExportAs_Click();
    bool AskToStopFirmware();
    bool AskToQuit();

    std::unique_ptr<Ui::frmMain> ui;
    clsApplication* mcApp = nullptr;
    clsRecordTableModel* mcModel = nullptr;
    QLabel* mcStatusLine = nullptr;
    clsQtProgressBar mcBars[3];
    bool mbActivated = false;
    bool mbCloseRequested = false;
    bool mbFirmwareRunning = false;
};
