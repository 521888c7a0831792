#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

class clsSimBootloader;
class clsSimDisplay;
class clsSimFaults;

// corvane-display-sim's command line: the options with their ranges, and
// what they make of the display before it goes on the line. Every refusal
// names the option at fault.
class clsSimOptions
{
public:
    clsSimOptions();

    // vcArguments with the program's name first; false with rsError on a bad option.
    bool Parse(const QStringList& vcArguments, QString& rsError);
    // Geometry, identity and flash content.
    bool PrepareDisplay(clsSimDisplay& rcDisplay, QString& rsError) const;
    // The --fault lists: the bootloader's faults are the simulator's own, every other name the device model's.
    bool ApplyFaults(clsSimFaults& rcFaults, clsSimBootloader& rcBootloader, QString& rsError) const;
    bool SaveFlash(const clsSimDisplay& rcDisplay, QString& rsError) const;
    QString HelpText() const;

    bool IsSet(const QString& vsName) const { return mcParser.isSet(vsName); }
    QString Value(const QString& vsName) const { return mcParser.value(vsName); }
    // The pace of the display's output in bit/s; 0 with --no-pacing.
    int Baud() const { return IsSet(QStringLiteral("no-pacing")) ? 0 : mlBaud; }
    int UnplugAfter() const { return mlUnplugAfter; }

private:
    bool ReadNumber(const QString& vsName, int vlMin, int vlMax, int& rlValue, QString& rsError) const;

    QCommandLineParser mcParser;
    int mlFirst = 0;
    int mlLast = 63;
    int mlLog2 = 12;
    int mlMaxData = 120;
    int mlSeed = 1;
    int mlDays = 30;
    int mlBaud = 57600;
    int mlUnplugAfter = 0;
};
