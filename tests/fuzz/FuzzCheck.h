#pragma once

#include <QString>
#include <cstdio>
#include <cstdlib>

// A broken promise of the code under test: abort, so libFuzzer keeps the
// input as a finding and the corpus run fails.
inline void FuzzCheck(bool vbHolds, const char* vsWhat, const QString& vsDetail = QString())
{
    if (vbHolds)
        return;
    std::fprintf(stderr, "fuzz check failed: %s\n%s\n", vsWhat, qPrintable(vsDetail));
    std::abort();
}
