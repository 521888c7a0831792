#pragma once

#include "upload/clsUpgradeFile.h"

class clsUpgradeKVTSA : public clsUpgradeFile
{
public:
    clsUpgradeKVTSA() : clsUpgradeFile(UploadType::KVTSA) {}
};
