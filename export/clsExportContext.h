#pragma once

#include "data/clsRecordSelection.h"

#include <QDateTime>
#include <QString>

// What an export needs beyond the records: which kinds the table shows, and
// the display and moment the records were copied from (for a register's header).
struct clsExportContext {
    clsRecordSelection Selection;
    QString DisplayId;      // empty when the records came from page files on disk
    QDateTime Downloaded;   // local time; invalid when not known
};
