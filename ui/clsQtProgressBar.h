#pragma once

#include "platform/IMainWindow.h"

class QProgressBar;

// A progress bar of the window as the status model sees it.
class clsQtProgressBar : public IProgressBar
{
public:
    void Attach(QProgressBar* vcBar) { mcBar = vcBar; }

    bool Visible() const override;
    void SetVisible(bool vbVisible) override;
    int Min() const override;
    void SetMin(int vlMin) override;
    int Max() const override;
    void SetMax(int vlMax) override;
    int Value() const override;
    void SetValue(int vlValue) override;

private:
    QProgressBar* mcBar = nullptr;
};
