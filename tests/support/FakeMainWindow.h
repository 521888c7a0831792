#pragma once

#include "app/clsApplication.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "platform/IMainWindow.h"

#include <QMap>
#include <QStringList>

// Records what the core asks of the main window.
class FakeProgressBar : public IProgressBar
{
public:
    bool Visible() const override { return visible; }
    void SetVisible(bool vbVisible) override { visible = vbVisible; ++writes; }
    int Min() const override { return min; }
    void SetMin(int vlMin) override { min = vlMin; ++writes; }
    int Max() const override { return max; }
    void SetMax(int vlMax) override { max = vlMax; ++writes; }
    int Value() const override { return value; }
    void SetValue(int vlValue) override { value = vlValue; ++writes; }

    bool visible = false;
    int min = 0, max = 100, value = 0, writes = 0;
};

class FakeMainWindow : public IMainWindow
{
public:
    void SetStatusLine(const QString& vsText) override { statusLines << vsText; }
    IProgressBar& ProgressBar(Bar vBar) override { return bars[int(vBar)]; }
    void EnableButtons(bool vbEnabled) override { calls << QStringLiteral("EnableButtons(%1)").arg(vbEnabled); }
    void EnableMenu(bool vbEnabled) override { calls << QStringLiteral("EnableMenu(%1)").arg(vbEnabled); }
    void ClearGrid() override { Call(QStringLiteral("ClearGrid")); }
    // The rows a window reads at this moment, as it would draw them.
    void RecordsChanged() override
    {
        Call(QStringLiteral("RecordsChanged"));
        clsApplication& rcApp = *clsApplication::Instance();
        for (int i = 1; i <= rcApp.Records().Count(); ++i)
            if (rcApp.Selection().Admits(rcApp.Records().Item(i)))
                gridRows << rcApp.Records().Item(i).GetFullStringWithDelimiter(QStringLiteral("\t"), rcApp.Selection().cheShowRoute);
    }
    void RecordsCleared() override { Call(QStringLiteral("RecordsCleared")); }
    void AutoSizeTheColumns() override { calls << QStringLiteral("AutoSizeTheColumns"); }
    QString UploadFileText(int vlIndex) const override { return uploadFiles.value(vlIndex); }
    void SetUploadFileText(int vlIndex, const QString& vsFileName) override { uploadFiles[vlIndex] = vsFileName; }
    void SetMdWarningHighlighted(bool vbOn) override { calls << QStringLiteral("MdWarning(%1)").arg(vbOn); }
    void GiveUpWork() override { calls << QStringLiteral("GiveUpWork"); }

    // The status text without the padding and the secondary text.
    QString LastStatus() const { return statusLines.isEmpty() ? QString() : statusLines.last().left(90).trimmed(); }

    QStringList statusLines, calls, gridRows;
    QMap<int, QString> uploadFiles;
    FakeProgressBar bars[3];

private:
    // The grid calls start from an empty table.
    void Call(const QString& vsCall)
    {
        calls << vsCall;
        gridRows.clear();
    }
};
