#pragma once

class clsHalvexRecord;

// The selection check boxes of the logged-data page: which kinds of record
// the grid shows. Kept by the core so the command line can set them too.
struct clsRecordSelection {
    bool cheRitRegistratie = true;         // "Route log"
    bool chePoliceCheck = true;            // "PoliceCheck": radar and spot alarms
    bool cheRitRegistratieTankstop = true; // "Tank stop"
    bool chePoliceCheckTc = true;          // "PoliceCheck TC"
    bool cheDebugRoute = false;            // "DBG route"
    bool cheDebugKmCorrection = false;     // "DBG kmCo"
    bool cheShowRoute = false;             // "Show route"

    // A valid record is shown when a ticked box belongs to one of its kinds.
    bool Admits(const clsHalvexRecord& vcRecord) const;
};
