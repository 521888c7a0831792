#pragma once

#include <QString>
#include <vector>

class clsHalvexRecord;

// One column of the record table: its header text and its cell text, as the
// tab-delimited file and the grid show it.
struct clsRecordColumn {
    QString Title;
    QString (*Text)(const clsHalvexRecord& rcRecord);
};

// The 21 columns in file order. The header, the delimited line, the grid and
// every export read the columns from here, so a column is added in one place.
// The last column is the route: a line without the route stops before it.
const std::vector<clsRecordColumn>& RecordColumns();
