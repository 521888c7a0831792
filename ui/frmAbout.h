#pragma once

#include <QDialog>
#include <memory>

namespace Ui {
class frmAbout;
}

// The About box: the program's name and its three-part version.
class frmAbout : public QDialog
{
    Q_OBJECT
public:
    explicit frmAbout(QWidget* vcParent = nullptr);
    ~frmAbout() override;

    // "Version: 1.2.31": each number in decimal, a zero shown as 0.
    static QString VersionText(int vlMajor, int vlMinor, int vlRevision);

private:
    void Form_Initialize();

    std::unique_ptr<Ui::frmAbout> ui;
};
