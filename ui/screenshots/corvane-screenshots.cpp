// Takes the documentation's pictures of the main window: the window program
// on its simulated display, the logged data copied, then each tab in turn.
// scripts/screenshots runs it under Xvfb.
//
//   corvane-screenshots DIR HOME
//       writes DIR/window-<key>.png for each tab; HOME is the program's home
//       (settings, log, sample files), whose paths show in the upload boxes

#include "app/clsApplication.h"
#include "ui/clsDesktopProgram.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QTabWidget>
#include <cstdio>

int main(int argc, char* argv[])
{
    QApplication lcQt(argc, argv);
    if (QApplication::arguments().size() != 3) {
        std::fprintf(stderr, "usage: corvane-screenshots DIR HOME\n");
        return 2;
    }
    const QDir lcOutput(QApplication::arguments().at(1));
    clsDesktopProgram lcProgram(clsDesktopProgram::Options{QString(), QApplication::arguments().at(2), true});
    if (!lcProgram.Error().isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(lcProgram.Error()));
        return 1;
    }
    lcProgram.Init();
    frmMain& rcWindow = lcProgram.Window();
    int llWritten = 0;
    lcProgram.Application().Start([&]() {
        rcWindow.resize(1180, 720);
        rcWindow.show();
        QApplication::processEvents();
        rcWindow.findChild<QAbstractButton*>(QStringLiteral("cmdDownload"))->click();
        auto* lcTabs = rcWindow.findChild<QTabWidget*>(QStringLiteral("tbsSelect"));
        for (int i = 0; i < lcTabs->count(); ++i) {
            lcTabs->setCurrentIndex(i);
            QApplication::processEvents();
            const QString lsFile = lcOutput.filePath(QStringLiteral("window-%1.png").arg(rcWindow.TabKey(i)));
            if (rcWindow.grab().save(lsFile)) {
                std::printf("%s\n", qPrintable(lsFile));
                ++llWritten;
            }
        }
        lcProgram.Application().SetDataSaved(true);
    });
    return llWritten == 4 ? 0 : 1;
}
