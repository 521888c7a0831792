#pragma once

#include <QString>

// One progress bar control of the main window.
class IProgressBar
{
public:
    virtual ~IProgressBar() = default;
    virtual bool Visible() const = 0;
    virtual void SetVisible(bool vbVisible) = 0;
    virtual int Min() const = 0;
    virtual void SetMin(int vlMin) = 0;
    virtual int Max() const = 0;
    virtual void SetMax(int vlMax) = 0;
    virtual int Value() const = 0;
    virtual void SetValue(int vlValue) = 0;
};

// What the core asks of the main window. Check-box states are not read from
// here: the selection filter and the upload ticks are plain state of the core.
class IMainWindow
{
public:
    enum class Bar { Big, Small, Download };

    virtual ~IMainWindow() = default;

    virtual void SetStatusLine(const QString& vsText) = 0;
    virtual IProgressBar& ProgressBar(Bar vBar) = 0;

    virtual void EnableButtons(bool vbEnabled) = 0;
    virtual void EnableMenu(bool vbEnabled) = 0;

    // The record grid shows the header of the column table (clsRecordColumns)
    // and, as rows, the valid records of the application's record list that
    // its selection admits (clsRecordSelection::Admits), each once, in record
    // order; a window reads them when it draws, the core pushes no strings.
    // Cut down to the header row until the next RecordsChanged; every
    // operation starts with it.
    virtual void ClearGrid() = 0;
    // The record list or the selection changed: read the rows again. The
    // place columns of the shown rows have been looked up by then, so reading
    // a row never searches the place table and cannot fail.
    virtual void RecordsChanged() = 0;
    // The table was cleared: the header row and blank rows.
    virtual void RecordsCleared() = 0;
    virtual void AutoSizeTheColumns() = 0;

    // The upload file text boxes, keyed by the file type's index.
    virtual QString UploadFileText(int vlIndex) const = 0;
    virtual void SetUploadFileText(int vlIndex, const QString& vsFileName) = 0;

    // The firmware warning text box, highlighted while the firmware is streamed.
    virtual void SetMdWarningHighlighted(bool vbHighlighted) = 0;

    // Shut-down: stop whatever the window is doing.
    virtual void GiveUpWork() = 0;
};
