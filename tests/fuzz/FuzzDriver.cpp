// Runs a fuzz target once over its seed corpus without libFuzzer, so the
// findings kept in the corpus stay fixed on every build: each argument is an
// input file or a directory of them.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* vcData, size_t vlSize);

int main(int argc, char* argv[])
{
    int llInputs = 0;
    for (int i = 1; i < argc; ++i) {
        const QFileInfo lcArgument(QString::fromLocal8Bit(argv[i]));
        const QFileInfoList lcFiles =
            lcArgument.isDir() ? QDir(lcArgument.filePath()).entryInfoList(QDir::Files, QDir::Name) : QFileInfoList{lcArgument};
        for (const QFileInfo& lcInput : lcFiles) {
            QFile lcFile(lcInput.filePath());
            if (!lcFile.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(lcInput.filePath()));
                return 1;
            }
            const QByteArray lcData = lcFile.readAll();
            std::printf("%s\n", qPrintable(lcInput.fileName()));
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(lcData.constData()), size_t(lcData.size()));
            ++llInputs;
        }
    }
    std::printf("%d inputs\n", llInputs);
    // An empty corpus would let the target's checks pass without running.
    return llInputs > 0 ? 0 : 1;
}
