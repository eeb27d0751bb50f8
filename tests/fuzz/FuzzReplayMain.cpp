// Runs a fuzz target over files and folders of inputs, once each, outside libFuzzer: the
// corpus as a regression test of builds made with any compiler.
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        QStringList files;
        const QString path = QFile::decodeName(argv[i]);
        if (QFileInfo(path).isDir()) {
            QDirIterator it(path, QDir::Files, QDirIterator::Subdirectories);
            while (it.hasNext())
                files << it.next();
            files.sort();
        } else {
            files << path;
        }
        for (const QString& file : files) {
            QFile input(file);
            if (!input.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(file));
                return 1;
            }
            const QByteArray data = input.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(data.constData()),
                                   static_cast<size_t>(data.size()));
            ++inputs;
        }
    }
    std::printf("%d inputs ran\n", inputs);
    return inputs > 0 ? 0 : 1;
}
