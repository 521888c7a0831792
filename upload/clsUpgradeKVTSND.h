#pragma once

#include "upload/clsUpgradeFile.h"

class clsUpgradeKVTSND : public clsUpgradeFile
{
public:
    clsUpgradeKVTSND() : clsUpgradeFile(UploadType::KVTSND) {}
};
