// Runs a fuzz target over files, for compilers that have no fuzzer.
//
// Usage: TARGET FOLDER...

#include <QtCore/QDirIterator>
#include <QtCore/QFile>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        QDirIterator it(QString::fromLocal8Bit(argv[i]), QDir::Files);
        while (it.hasNext()) {
            QFile file(it.next());
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(file.fileName()));
                return 1;
            }
            const QByteArray bytes = file.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                   std::size_t(bytes.size()));
            ++count;
        }
    }
    std::printf("%d files\n", count);
    return count > 0 ? 0 : 1;
}
