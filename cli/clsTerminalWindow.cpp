#include "cli/clsTerminalWindow.h"

#include "app/clsApplication.h"
#include "platform/IEventLoop.h"

#include <QRegularExpression>

#ifdef Q_OS_UNIX
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace {
constexpr int kDefaultWidth = 80;
constexpr quint32 kPlainInterval = 1000;
}

int clsTerminalBar::Percent() const
{
    if (mlMax <= mlMin)
        return 0;
    const qint64 llPercent = (qint64(mlValue) - mlMin) * 100 / (qint64(mlMax) - mlMin);
    return int(qBound(qint64(0), llPercent, qint64(100)));
}

clsTerminalWindow::clsTerminalWindow(std::FILE* vcOut, bool vbTerminal)
    : mcOut(vcOut)
    , mbTerminal(vbTerminal)
{
}

void clsTerminalWindow::Attach(clsApplication& rcApplication)
{
    mcApplication = &rcApplication;
    connect(&rcApplication, &clsApplication::StatusShown, this, &clsTerminalWindow::Redraw);
}

IProgressBar& clsTerminalWindow::ProgressBar(Bar vBar)
{
    return mcBars[int(vBar)];
}

// A terminal has no buttons to grey out.
void clsTerminalWindow::EnableButtons(bool vbEnabled)
{
    (void)vbEnabled;
}

QString clsTerminalWindow::UploadFileText(int vlIndex) const
{
    return mcUploadFiles.value(vlIndex);
}

void clsTerminalWindow::SetUploadFileText(int vlIndex, const QString& vsFileName)
{
    mcUploadFiles[vlIndex] = vsFileName;
}

QString clsTerminalWindow::ProgressText() const
{
    QString lsText;
    if (mcApplication) {
        lsText = mcApplication->Status().StatusString().trimmed();
        const QString lsSmall = mcApplication->Status().SmallStatusString().trimmed();
        if (!lsSmall.isEmpty())
            lsText += (lsText.isEmpty() ? QString() : QStringLiteral(" - ")) + lsSmall;
    } else {
        lsText = msStatusLine.trimmed();
    }
    const clsTerminalBar& lcBig = mcBars[int(Bar::Big)];
    const clsTerminalBar& lcSmall = mcBars[int(Bar::Small)];
    if (lcBig.Visible())
        lsText += QStringLiteral("  big %1%").arg(lcBig.Percent(), 3);
    if (lcSmall.Visible())
        lsText += QStringLiteral("  small %1%").arg(lcSmall.Percent(), 3);
    return lsText.trimmed();
}

// On a terminal the line is rewritten in place. Elsewhere (a log, a pipe) a
// line is written for each new kind of status text and, at most once a
// second, for a new tenth of the big bar: not for every part of every page,
// so a long download stays readable.
void clsTerminalWindow::Redraw()
{
    if (mbQuiet)
        return;
    if (mbTerminal) {
        const QString lsLine = LiveLine();
        if (lsLine == msShown)
            return;
        msShown = lsLine;
        Write(QStringLiteral("\r") + lsLine + QStringLiteral("\x1b[K"));
        return;
    }
    const QString lsText = ProgressText();
    static const QRegularExpression scNumber(QStringLiteral("\\s*\\d+"));
    const QString lsKind = QString(lsText).replace(scNumber, QStringLiteral("#"));
    const clsTerminalBar& lcBig = mcBars[int(Bar::Big)];
    const int llTenth = lcBig.Visible() ? lcBig.Percent() / 10 : -1;
    const quint32 llNow = mcApplication ? mcApplication->EventLoop().timeGetTime() : 0;
    const bool lbNewKind = !mcPlainKinds.contains(lsKind);
    const bool lbMoved = llTenth != mlPlainTenth && llNow - mlPlainTime >= kPlainInterval;
    if (lsText.isEmpty() || (!lbNewKind && !lbMoved))
        return;
    mcPlainKinds.insert(lsKind);
    mlPlainTenth = llTenth;
    mlPlainTime = llNow;
    Write(lsText + QLatin1Char('\n'));
}

QString clsTerminalWindow::LiveLine()
{
    clsProgressLine::Sample lcSample;
    if (mcApplication) {
        lcSample.What = mcApplication->Status().StatusString();
        lcSample.NowMs = mcApplication->EventLoop().timeGetTime();
    } else {
        lcSample.What = msStatusLine;
    }
    const clsTerminalBar& lcBig = mcBars[int(Bar::Big)];
    lcSample.BarVisible = lcBig.Visible();
    lcSample.Min = lcBig.Min();
    lcSample.Max = lcBig.Max();
    lcSample.Position = lcBig.Value();
    lcSample.Bytes = mByteCounter ? mByteCounter() : 0;
    lcSample.Width = TerminalWidth();
    return mcLine.Text(lcSample);
}

void clsTerminalWindow::PrintLine(const QString& vsText, bool vbNewLine, bool vbEvenIfQuiet)
{
    if (mbQuiet && !vbEvenIfQuiet)
        return;
    const QString lsEnd = vbNewLine ? QStringLiteral("\n") : QString();
    if (!mbTerminal || msShown.isEmpty()) {
        Write(vsText + lsEnd);
        return;
    }
    Write(QStringLiteral("\r\x1b[K") + vsText + lsEnd);
    const QString lsShown = msShown;
    msShown.clear();
    if (vbNewLine && !lsShown.isEmpty()) {
        msShown = lsShown;
        Write(lsShown);
    }
}

void clsTerminalWindow::Finish()
{
    if (mbTerminal && !msShown.isEmpty())
        Write(QStringLiteral("\n"));
    msShown.clear();
}

void clsTerminalWindow::Write(const QString& vsText)
{
    const QString lsText = mUserNames ? mUserNames(vsText) : vsText;
    std::fputs(lsText.toLocal8Bit().constData(), mcOut);
    std::fflush(mcOut);
}

int clsTerminalWindow::TerminalWidth() const
{
#ifdef Q_OS_UNIX
    winsize lcSize{};
    if (ioctl(fileno(mcOut), TIOCGWINSZ, &lcSize) == 0 && lcSize.ws_col > 10)
        return lcSize.ws_col;
#endif
    return kDefaultWidth;
}
