#include "data/clsRecordSelection.h"

#include "data/clsHalvexRecord.h"

bool clsRecordSelection::Admits(const clsHalvexRecord& vcRecord) const
{
    if (!vcRecord.IsValid())
        return false;
    return (cheRitRegistratie && vcRecord.isRitRegType())
        || (cheRitRegistratieTankstop && vcRecord.isTankStopType())
        || (chePoliceCheck && (vcRecord.isPoliceCheckRadarType() || vcRecord.isPoliceCheckSpotType()))
        || (chePoliceCheckTc && vcRecord.isPoliceCheckTcType())
        || (cheDebugRoute && vcRecord.isRouteType())
        || (cheDebugKmCorrection && vcRecord.isKmCorrectieType());
}
