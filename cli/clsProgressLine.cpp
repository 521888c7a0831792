#include "cli/clsProgressLine.h"

#include <QStringList>

namespace {
constexpr int kBarCells = 20;
// Too short a run gives a rate and an estimate that jump about.
constexpr quint32 kSettleMs = 1000;
}

QString clsProgressLine::Text(const Sample& vcSample)
{
    Follow(vcSample);
    QStringList lcParts;
    if (vcSample.BarVisible && vcSample.Max > vcSample.Min) {
        const qint64 llSpan = qint64(vcSample.Max) - vcSample.Min;
        const qint64 llDone = qBound(qint64(0), qint64(vcSample.Position) - vcSample.Min, llSpan);
        lcParts << Bar(int(llDone * 100 / llSpan));
        const QString lsUnit = Unit(vcSample.What);
        lcParts << (lsUnit.isEmpty() ? QString() : lsUnit + QLatin1Char(' ')) + QStringLiteral("%1 of %2").arg(llDone).arg(llSpan);
        const quint32 llElapsed = vcSample.NowMs - mlStartMs;
        if (llElapsed >= kSettleMs) {
            if (vcSample.Bytes > mlStartBytes)
                lcParts << Rate((vcSample.Bytes - mlStartBytes) * 1000.0 / llElapsed);
            const qint64 llRunDone = qint64(vcSample.Position) - mlStartPosition;
            const qint64 llLeft = qint64(vcSample.Max) - vcSample.Position;
            if (llRunDone > 0)
                lcParts << Duration((qint64(llElapsed) * llLeft / llRunDone + 999) / 1000) + QStringLiteral(" left");
        }
    }
    const QString lsTail = lcParts.join(QStringLiteral("  "));
    QString lsWhat = vcSample.What.simplified();
    const int llRoom = vcSample.Width - 1 - (lsTail.isEmpty() ? 0 : lsTail.size() + 2);
    if (lsWhat.size() > llRoom)
        lsWhat = llRoom > 1 ? lsWhat.left(llRoom - 1) + QChar(0x2026) : QString();
    const QString lsLine = lsTail.isEmpty() ? lsWhat : (lsWhat.isEmpty() ? lsTail : lsWhat + QStringLiteral("  ") + lsTail);
    return lsLine.left(qMax(0, vcSample.Width - 1));
}

void clsProgressLine::Follow(const Sample& vcSample)
{
    const bool lbNewRun = !mbRunning || !vcSample.BarVisible || vcSample.Min != mlMin || vcSample.Max != mlMax
                       || vcSample.Position < mlLastPosition;
    if (lbNewRun) {
        mlMin = vcSample.Min;
        mlMax = vcSample.Max;
        mlStartPosition = vcSample.Position;
        mlStartMs = vcSample.NowMs;
        mlStartBytes = vcSample.Bytes;
        msUnit.clear();
    }
    mbRunning = vcSample.BarVisible;
    mlLastPosition = vcSample.Position;
}

QString clsProgressLine::Unit(const QString& vsWhat)
{
    const QString lsWhat = vsWhat.toLower();
    if (lsWhat.contains(QLatin1String("line")))
        msUnit = QStringLiteral("line");
    else if (lsWhat.contains(QLatin1String("page")))
        msUnit = QStringLiteral("page");
    return msUnit;
}

QString clsProgressLine::Bar(int vlPercent)
{
    const int llFull = qBound(0, vlPercent, 100) * kBarCells / 100;
    return QLatin1Char('[') + QString(llFull, QLatin1Char('#')) + QString(kBarCells - llFull, QLatin1Char('.'))
         + QStringLiteral("] %1%").arg(qBound(0, vlPercent, 100), 3);
}

QString clsProgressLine::Rate(double vdBytesASecond)
{
    if (vdBytesASecond < 1000.0)
        return QStringLiteral("%1 B/s").arg(qRound(vdBytesASecond));
    return QStringLiteral("%1 kB/s").arg(vdBytesASecond / 1000.0, 0, 'f', 1);
}

QString clsProgressLine::Duration(qint64 vlSeconds)
{
    const qint64 llHours = vlSeconds / 3600;
    const QString lsMinutesSeconds = QStringLiteral("%1:%2")
                                         .arg(vlSeconds / 60 % 60, llHours > 0 ? 2 : 1, 10, QLatin1Char('0'))
                                         .arg(vlSeconds % 60, 2, 10, QLatin1Char('0'));
    return llHours > 0 ? QString::number(llHours) + QLatin1Char(':') + lsMinutesSeconds : lsMinutesSeconds;
}
