// A page file (one decimal byte value a line) through the whole decode and
// processing of the records, as the command line's decode runs it on files
// from disk: 256-byte pages, the file Page1.DSW.
// Checks: a file that fails to read is left as it was and the error names
// it; a file that decodes is removed; every record kept is valid, the display
// kinds are numbered 1, 2, 3 ... and every line has its 21 columns.

#include "FuzzCheck.h"
#include "GoldenData.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"

#include <cstdint>

namespace {
// An application with the hand-built set's place table in its home, decoding 256-byte pages.
struct Decoder : TestApp {
    Decoder()
        : TestApp(nullptr, false)
    {
        FuzzCheck(QFile::copy(QStringLiteral(CORVANE_TEST_DATA "/pipeline-handbuilt/postcode.gps"),
                              Home() + QStringLiteral("postcode.gps")), "place table copied");
        app->Init();
    }
    const clsFlashMemInfo geometry = Geometry(1, 1, 8);
};

void CheckRecords(clsRecordCollection& rcRecords)
{
    FuzzCheck(rcRecords.Count() <= 256 / clsHalvexRecord::kSize, "at most 10 records from a 256-byte page");
    qint32 llNumber = 1;
    for (qint32 i = 1; i <= rcRecords.Count(); ++i) {
        clsHalvexRecord& rcRecord = rcRecords.Item(i);
        FuzzCheck(rcRecord.IsValid(), "only valid records are kept");
        if (rcRecord.isDisplayType())
            FuzzCheck(rcRecord.RecordNumber() == llNumber++, "display kinds numbered in order");
        const QString lsLine = rcRecord.GetFullStringWithDelimiterToFile(QStringLiteral("\t"));
        FuzzCheck(lsLine.count(QLatin1Char('\t')) == 20, "a line of 21 columns", lsLine);
    }
}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* vcData, size_t vlSize)
{
    static Decoder scDecoder;
    // The fake window keeps every status line and call; over a million inputs that is gigabytes.
    scDecoder.window.statusLines.clear();
    scDecoder.window.calls.clear();
    const QString lsPage = scDecoder.app->PageFileName(1);
    const QByteArray lcContent(reinterpret_cast<const char*>(vcData), qsizetype(vlSize));
    WriteInput(lsPage, lcContent);
    clsError lcError;
    scDecoder.app->DecodeAndProcess(lcError, scDecoder.geometry);
    if (lcError.IsError()) {
        if (QFile::exists(lsPage)) {
            FuzzCheck(lcError.Description().contains(QStringLiteral("Page1.DSW")), "the error names the page file",
                      lcError.Description());
            FuzzCheck(ReadAll(lsPage) == lcContent, "a page file that fails to read is left as it was");
            QFile::remove(lsPage);
        }
        return 0;
    }
    FuzzCheck(!QFile::exists(lsPage), "a decoded page file is removed");
    CheckRecords(scDecoder.app->Records());
    return 0;
}
