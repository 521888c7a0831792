#pragma once

#include "upload/clsUpgradeFile.h"

class clsUpgradeKVTMD : public clsUpgradeFile
{
public:
    clsUpgradeKVTMD() : clsUpgradeFile(UploadType::KVTMD) {}
};
