#pragma once

// The chief header. clsApplication is one object, but its members are defined
// in the folder of the subsystem they belong to; the sections below name the
// file that defines each group.

#include "app/clsDTimer.h"
#include "app/clsError.h"
#include "app/clsOperation.h"
#include "app/clsStatus.h"
#include "data/clsRecordSelection.h"
#include "export/clsExportContext.h"
#include "link/clsFoundPort.h"
#include "upload/clsUploadSelection.h"

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>

class IEventLoop;
class IUserDialogs;
class IMainWindow;
class IRegistry;
class ISerialPort;
class IDataFile;
class clsSettings;
class clsLogger;
class clsHalvexMsg;
class clsFlashMemInfo;
class clsGpsPlaces;
class clsRecordCollection;

// What the application is given by the front end that starts it.
struct clsPlatform {
    IEventLoop* EventLoop = nullptr;
    IUserDialogs* Dialogs = nullptr;
    IMainWindow* MainWindow = nullptr;
    ISerialPort* Port = nullptr;
    IRegistry* Registry = nullptr;     // null: the KVT USB interface is not searched for
    QString HomeDir;               // --home / CORVANE_HOME; empty for the default
    QString PlacesFile;            // --places; empty for postcode.gps in StdDirectory
};

class clsApplication : public QObject
{
    Q_OBJECT
public:
    explicit clsApplication(const clsPlatform& vcPlatform);
    ~clsApplication() override;

    // The one application object while it exists; null otherwise.
    static clsApplication* Instance();

    // ---- Start-up and shut-down: app/clsApplication.cpp ----
    void Init();
    // Shows the main window modally; DeInit when it closes.
    void Start(const std::function<void()>& vShowMainWindow);
    void DeInit();
    void Quite();
    void DelayedQuite();
    bool IsInitialised() const { return mbInitialised; }
    bool MainWindowShown() const { return mbMainWindowShown; }

    static QString VersionString();
    static QString ApplicationName() { return QStringLiteral("Corvane Desktop"); }
    // Ends with the platform's separator.
    QString StdDirectory() const;
    static QString GetDirectoryFromPath(const QString& vsPath);
    void HandleError(clsError& rcError);

    clsSettings& Settings();
    clsLogger& Logger();
    clsStatus& Status() { return mcStatus; }
    IEventLoop& EventLoop() const { return *mcPlatform.EventLoop; }
    IUserDialogs& Dialogs() const { return *mcPlatform.Dialogs; }
    IMainWindow& MainWindow() const { return *mcPlatform.MainWindow; }
    ISerialPort* Port() const { return mcPlatform.Port; }
    const clsPlatform& Platform() const { return mcPlatform; }

    // ---- The operation frame: app/clsOperation.cpp ----
    // Runs one user action: window off, auto-detection stopped, the link held,
    // a fresh error value (run-time errors caught into it), HandleError,
    // window on again; the outcome for the front end.
    clsOutcome RunOperation(const std::function<void(clsError&)>& vOperation);
    // The same without HandleError and without touching the grid: for handlers
    // that show their own boxes.
    clsOutcome RunOperationQuietly(const std::function<void(clsError&)>& vOperation);
    // Asks a long operation to stop at its next safe point; cleared when an operation starts.
    void RequestCancel() { mbCancelRequested = true; }
    bool CancelRequested() const { return mbCancelRequested; }

    // ---- Device link: link/clsApplicationLink.cpp ----
    clsHalvexMsg& MessageBrooker();
    bool SendString(const QByteArray& vcData);
    void mcCom_OnComm();
    void SendAndRetry(clsError& rcError, quint8 vbyFunc, const QString& vsArguments);
    // The same with a further test of the answer: an answer that fails it counts as a failed attempt.
    void SendAndRetry(clsError& rcError, quint8 vbyFunc, const QString& vsArguments,
                      const std::function<bool(const clsHalvexMsg&)>& vAnswerIsWhole);
    QString GetDallesID(clsError& rcError);
    bool CommunicationIsRunning() const { return mlRunningCount >= 1; }
    void SetCommunicationIsRunning(bool vbRunning) { mlRunningCount += vbRunning ? 1 : -1; }
    void MakeSureLowCurrentDisplay(clsError& rcError);
    bool CommunicationStopped() const { return mbCommunicationStopped; }
    void SetCommunicationStopped(bool vbStopped) { mbCommunicationStopped = vbStopped; }
    QString DisplayId() const { return msDisplayId; }
    void SetDisplayId(const QString& vsId) { msDisplayId = vsId; }
    // Applies the port of the settings ("Port" path, else "Com" number) to the serial port.
    void ApplyPortSettings();
    // The search for the USB interface's port that Init runs; a failure is shown and start-up goes on.
    void SetPortDiscovery(std::function<clsFoundPort(clsError&)> vDiscovery) { mPortDiscovery = std::move(vDiscovery); }
    // What Init's search found.
    clsFoundPort UsbComport() const { return mcUsbPort; }
    // The auto-detection timer on and off.
    void StartAutoDetection();
    void StopAutoDetection();
    bool AutoDetectionRunning() const;

    // ---- Port discovery and auto-detection: link/clsApplicationAutoDetect.cpp ----
    // The search itself, without side effects: what a front end gives SetPortDiscovery.
    clsFoundPort FindUsbComport(clsError& rcError);
    void GetCorrectComPortFromUser();
    // What one detection round found: no round (an operation owns the line, or
    // the USB interface was searched for instead), no answer, a display that was
    // there before, or one just plugged in and greeted.
    enum class Detection { NotRun, NoAnswer, Present, Greeted };
    Detection PerformAutoDetect();
    // True while a detection round waits on the display: a user action must wait for its end.
    bool DetectionRoundRunning() const { return mbDetectionRound; }

    // ---- Flash download: data/clsApplicationDownload.cpp ----
    void GetMemoryInfo(clsError& rcError, clsFlashMemInfo& rcInfo);
    void IsPageEmpty(clsError& rcError, qint32 vlPage, bool& rbIsEmpty);
    void DownloadPages(clsError& rcError);
    static qint32 GetPercentage(qint32 vlValue, qint32 vlTotal);
    QString PageFileName(qint32 vlPage) const;

    // ---- Erase and the operating-system check: data/clsApplicationErase.cpp ----
    void ClearFlash(clsError& rcError, bool vbCheckId);
    void CheckForOperatingSystem(clsError& rcError);
    void ClearRitAndPoliceTableInformation();
    // The user dialogue around ClearFlash, for the window and the command line:
    // data/clsApplicationClearDisplay.cpp. The outcome of the erase; Cancelled
    // without an error when the user stopped before anything was erased.
    clsOutcome clearDisplay();

    // ---- Record pipeline: data/clsApplicationImport.cpp ----
    void ImportDataFromDisplay(clsError& rcError);
    // The import's decoding and processing on page files already in StdDirectory, with the
    // geometry given instead of asked of the display (the command line's decode).
    void DecodeAndProcess(clsError& rcError, const clsFlashMemInfo& vcInfo);
    void DecodeDataFromFiles(clsError& rcError);
    // The decode step with a geometry given instead of asked of the display.
    void DecodeDataFromFiles(clsError& rcError, const clsFlashMemInfo& vcInfo);
    void CleanUpDecodedInformation(clsError& rcError);
    void CountRecords(clsError& rcError);
    void CorrectKmInformation(clsError& rcError);
    void RecalculateKmTellers(qint32 vlAnchor, qint32 vlCorrection, qint32 vlPreviousKm);
    void ProcessInformation(clsError& rcError);
    void CaluclateRoutePostcodes(clsError& rcError);
    void ShowRecords(clsError& rcError);
    clsRecordCollection& Records() { return *mcRecords; }
    clsRecordSelection& Selection() { return mcSelection; }

    // ---- Place table: data/clsApplicationPlaces.cpp ----
    clsGpsPlaces& GpsPlaces();
    // Where postcode.gps is read from, for a program in vsProgramDirectory.
    static QString LocatePlacesFile(const QString& vsStdDirectory, const QString& vsProgramDirectory);

    // ---- Export: export/clsApplicationExport.cpp ----
    void SaveToDisk(clsError& rcError);
    QString GetNewFileNameForDatafile(IDataFile& rcDataFile, const QString& vsCurrent);
    bool DataSaved() const { return mbDataSaved; }
    void SetDataSaved(bool vbSaved) { mbDataSaved = vbSaved; }
    bool CheckFileExists(const QString& vsPath) const;
    // "Export as": asks for the file (the save dialog, or -o on the command
    // line) and writes what the table shows in vsFormat, or when that is empty
    // in the format of the file's extension (txt, csv, xlsx, gpx, kml, pdf).
    void ExportAs(clsError& rcError, const QString& vsFormat = QString());
    // Writes the records to vsFileName in vsFormat without asking anything.
    void ExportToFile(clsError& rcError, const QString& vsFileName, const QString& vsFormat);
    // What an export writes beside the records: selection, display ID, when they were copied.
    clsExportContext ExportContext() const;
    QDateTime RecordsTaken() const { return mcRecordsTaken; }
    void SetRecordsTaken(const QDateTime& vcWhen) { mcRecordsTaken = vcWhen; }

    // ---- Upload to the display: upload/clsApplicationUpload.cpp ----
    // The choose family: a file dialog for the type, the choice kept in the
    // settings and its text box; a cancelled dialog changes nothing.
    void GetNewFileNameForUpload(UploadType vType);
    void GetNewFileNameForUploadSSL() { GetNewFileNameForUpload(UploadType::SSL); }
    void GetNewFileNameForUploadSFL() { GetNewFileNameForUpload(UploadType::SFL); }
    void GetNewFileNameForUploadUSL() { GetNewFileNameForUpload(UploadType::USL); }
    void GetNewFileNameForUploadUFL() { GetNewFileNameForUpload(UploadType::UFL); }
    void GetNewFileNameForUploadKVTCC() { GetNewFileNameForUpload(UploadType::KVTCC); }
    void GetNewFileNameForUploadKVTSA() { GetNewFileNameForUpload(UploadType::KVTSA); }
    void GetNewFileNameForUploadKVTSND() { GetNewFileNameForUpload(UploadType::KVTSND); }
    void GetNewFileNameForUploadKVTMemoryDisplay() { GetNewFileNameForUpload(UploadType::KVTMD); }
    // Fills the eight upload file boxes from the settings (the window, when it is activated).
    void ShowLastUploadFiles();
    void HandleUploadDatabases(clsError& rcError);
    void HandleUploadKVT(clsError& rcError);
    void CheckFileExistsAndWarn(clsError& rcError, const QString& vsFileName, bool& rbOk);
    void CheckFileExists(const QString& vsFileName, bool& rbExists) const;
    // The upload tick boxes.
    clsUploadSelection& UploadSelection() { return mcUploadSelection; }
    // Read every page back after an upload and compare it with the file (off unless asked for).
    void SetVerifyUploads(bool vbVerify) { mbVerifyUploads = vbVerify; }
    bool VerifyUploads() const { return mbVerifyUploads; }

    // ---- The upload buttons, boxes included: upload/clsApplicationUploadClick.cpp ----
    // Nothing ticked: "Please select one or more items to upload" and an
    // outcome with that text; else the upload in the window's frame and its box.
    clsOutcome cmdUploadDatabases_Click();
    clsOutcome cmdInstallKVTSoftware_Click();
    // The Memory Display firmware of the KVT_MD file box.
    clsOutcome cmdInstallKVTMemoryDisplay_Click();

    // ---- Memory Display firmware: upload/clsApplicationFirmware.cpp ----
    // " Don't Disconnect!" on the display's own screen, or blanks over it.
    void writeMessageToDisplay(bool vbShow);
    // The firmware download with its boxes; the error tells the front end how it went.
    void subStartSoftwareDownload(clsError& rcError, const QString& vsFileName);

signals:
    // Raised when the status model changed and was copied to the window.
    void StatusShown();
    // The serial port could not be opened or went away; the text, naming the
    // port and the system's reason, is also in the log.
    void PortTrouble(const QString& vsText);

private:
    friend class clsOperation;
    friend class clsRawPortSession;

    // Device link: the frame codec on the serial port's receive event, and off it.
    void AttachCodec();
    void DetachCodec();
    void RunPortDiscovery();
    // The port found replaces the one of the settings for this run.
    void UseFoundPort(const clsFoundPort& vcFound);
    // Device link: one attempt of SendAndRetry.
    bool AnswerAccepted(quint8 vbyFunc, const QString& vsArguments,
                        const std::function<bool(const clsHalvexMsg&)>& vAnswerIsWhole);
    // After an answer that needed a retry, no request goes out before this time.
    static constexpr quint32 kSettleMs = 100;
    bool mbSettle = false;
    quint32 mlSettleUntil = 0;

    // Flash download: one page into its page file.
    void DownloadPage(clsError& rcError, qint32 vlPage, qint32 vlPageSize, qint32 vlMaxData);
    // Erase: the memory map and the page loop of ClearFlash.
    void ErasePages(clsError& rcError);
    // Record pipeline: the bodies of the two steps the window also runs alone.
    void CollectRoutes();
    void FillGrid();
    // Upload: the check phase and the send phase of the ticked files of one page.
    void UploadTicked(clsError& rcError, const std::vector<UploadType>& vcTypes, bool vbSkipAfterError);
    clsOutcome UploadClick(const std::vector<UploadType>& vcTypes, const std::function<void(clsError&)>& vUpload);
    // Firmware: the file checks, the 0xD9 handshake around the stream, the stream on the raw port.
    bool FirmwareFileAccepted(clsError& rcError, const QString& vsFileName);
    void DownloadFirmware(clsError& rcError, const QString& vsFileName);
    void StreamFirmware(clsError& rcError, const QString& vsFileName);
    // Place table: made by Init (or by the first use in an application that was not started).
    void CreateGpsPlaces();

    void StartLogging();
    // Export: the program's own replace question of the save dialogs.
    bool MayReplace(const QString& vsFileName);

    void mcStatus_StatusChanged();
    void mcDelayedQuite_Tick();
    void mcTimer_Tick();
    // Auto-detection: the greeting of a display that was just plugged in.
    Detection GreetNewDisplay();
    void WriteScreenLine(const QString& vsText, quint8 vbyTop);

    clsPlatform mcPlatform;
    std::function<clsFoundPort(clsError&)> mPortDiscovery;
    clsFoundPort mcUsbPort;
    qint32 mlOperationDepth = 0;
    bool mbCancelRequested = false;
    bool mbInitialised = false;
    bool mbMainWindowShown = false;
    bool mbAutoDetectionEnabled = false;
    bool mbDetectionRound = false;
    bool mbCommunicationStopped = false;
    bool mbIDRequested = false;
    bool mbStatusBusy = false;
    bool mbDataSaved = true;
    qint32 mlRunningCount = 0;
    QString msDisplayId;
    mutable QString msStdDirectory;
    QDateTime mcRecordsTaken;
    clsStatus mcStatus;
    clsRecordSelection mcSelection;
    clsUploadSelection mcUploadSelection;
    bool mbVerifyUploads = false;
    std::unique_ptr<clsSettings> mcSettings;
    std::unique_ptr<clsLogger> mcLogger;
    std::unique_ptr<clsHalvexMsg> mcMessage;
    std::unique_ptr<clsRecordCollection> mcRecords;
    std::unique_ptr<clsGpsPlaces> mcGpsPlaces;
    std::unique_ptr<clsDTimer> mcTimer;
    std::unique_ptr<clsDTimer> mcDelayedQuite;
};
