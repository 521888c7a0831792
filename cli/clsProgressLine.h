#pragma once

#include <QString>
#include <QtGlobal>

// The live progress line of a long operation on a terminal: what is
// happening, a bar, how far ("page 3 of 63", "line 120 of 4000"), the bytes a
// second on the serial line and the time left, fitted to the terminal's width.
// The rate and the time left are measured from when the bar started its run.
class clsProgressLine
{
public:
    struct Sample {
        QString What;          // the status text
        bool BarVisible = false;
        qint32 Min = 0;
        qint32 Max = 0;
        qint32 Position = 0;
        quint32 NowMs = 0;     // the program's millisecond clock
        quint64 Bytes = 0;     // bytes sent and received on the serial line so far
        int Width = 80;
    };

    QString Text(const Sample& vcSample);

    static QString Bar(int vlPercent);
    static QString Rate(double vdBytesASecond);
    static QString Duration(qint64 vlSeconds);

private:
    // A bar with other bounds, or one that went back, is a new run.
    void Follow(const Sample& vcSample);
    // What the bar counts, as the status text names it; a text that names
    // nothing ("Copied 7% of total") keeps the unit named earlier in the run.
    QString Unit(const QString& vsWhat);

    bool mbRunning = false;
    qint32 mlMin = 0;
    qint32 mlMax = 0;
    qint32 mlStartPosition = 0;
    qint32 mlLastPosition = 0;
    quint32 mlStartMs = 0;
    quint64 mlStartBytes = 0;
    QString msUnit;
};
