#include "ui/clsQtProgressBar.h"

#include <QProgressBar>

// The model says whether the bar is shown, not whether its window is.
bool clsQtProgressBar::Visible() const
{
    return !mcBar->isHidden();
}

void clsQtProgressBar::SetVisible(bool vbVisible)
{
    mcBar->setVisible(vbVisible);
}

int clsQtProgressBar::Min() const
{
    return mcBar->minimum();
}

void clsQtProgressBar::SetMin(int vlMin)
{
    mcBar->setMinimum(vlMin);
}

int clsQtProgressBar::Max() const
{
    return mcBar->maximum();
}

void clsQtProgressBar::SetMax(int vlMax)
{
    mcBar->setMaximum(vlMax);
}

int clsQtProgressBar::Value() const
{
    return mcBar->value();
}

// A value outside the range is what the model asked for; the control would
// drop it, so the range is widened to hold it.
// The control paints itself at once on every new percentage, some 25,000
// times while a full display is decoded, which took longer than the
// decoding; the new value is painted with the window's next events instead.
void clsQtProgressBar::SetValue(int vlValue)
{
    if (vlValue > mcBar->maximum())
        mcBar->setMaximum(vlValue);
    if (vlValue < mcBar->minimum())
        mcBar->setMinimum(vlValue);
    mcBar->setUpdatesEnabled(false);
    mcBar->setValue(vlValue);
    mcBar->setUpdatesEnabled(true);
}
