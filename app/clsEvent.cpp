#include "app/clsEvent.h"

void clsEvent::SetStatusString(const QString& vsText)
{
    if (vsText == msStatusString)
        return;
    msStatusString = vsText;
    emit StatusChanged();
}
