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

    // The record grid: header row, then one tab-separated row per record.
    virtual void ClearGrid() = 0;
    virtual void AddGridRow(const QString& vsTabbedRow) = 0;
    // After the table was cleared: the header row and eleven blank rows.
    virtual void ResetGrid() = 0;
    virtual void AutoSizeTheColumns() = 0;

    // The upload file text boxes, keyed by the file type's index.
    virtual QString UploadFileText(int vlIndex) const = 0;
    virtual void SetUploadFileText(int vlIndex, const QString& vsFileName) = 0;

    // The firmware warning text box, highlighted while the firmware is streamed.
    virtual void SetMdWarningHighlighted(bool vbHighlighted) = 0;

    // Shut-down: stop whatever the window is doing.
    virtual void GiveUpWork() = 0;
};
