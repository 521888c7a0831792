// Runs a fuzz target once over its seed corpus without libFuzzer, so the
// findings kept in the corpus stay fixed on every build: each argument is an
// input file or a directory of them.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* vcData, size_t vlSize);

namespace {
QStringList InputFiles(const QString& vsPath)
{
    const QFileInfo lcInfo(vsPath);
    if (!lcInfo.isDir())
        return {vsPath};
    QStringList lcFiles;
    const QDir lcDir(vsPath);
    for (const QString& lsName : lcDir.entryList(QDir::Files, QDir::Name))
        lcFiles << lcDir.filePath(lsName);
    return lcFiles;
}
}

int main(int argc, char* argv[])
{
    int llInputs = 0;
    for (int i = 1; i < argc; ++i) {
        for (const QString& lsFile : InputFiles(QString::fromLocal8Bit(argv[i]))) {
            QFile lcFile(lsFile);
            if (!lcFile.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(lsFile));
                return 1;
            }
            const QByteArray lcData = lcFile.readAll();
            std::printf("%s\n", qPrintable(QFileInfo(lsFile).fileName()));
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(lcData.constData()), size_t(lcData.size()));
            ++llInputs;
        }
    }
    std::printf("%d inputs\n", llInputs);
    // An empty corpus would let the target's checks pass without running.
    return llInputs > 0 ? 0 : 1;
}
