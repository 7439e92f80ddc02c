// Reading of frames in streams, MIB and TVIPS, against a plain read of the same bytes into memory.
//
// Compare the rows of one run: a frame of 2048 × 2048 pixels of 16 bits in each, in the page cache.

#include "imagefiles/mibfile.h"
#include "imagefiles/tvipsfile.h"

#include <benchmark/benchmark.h>

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <memory>

namespace tessera {

namespace {

constexpr int g_nSide = 2048;

QByteArray mibFrame()
{
    const QByteArray bytes = QByteArrayLiteral("MQ1,000001,00384,01,2048,2048,U16,   1x1,01,,0.05,0,0,0,12,");
    return bytes.leftJustified(384, '\0') + QByteArray(g_nSide * g_nSide * 2, '\7');
}

QByteArray tvipsFrame()
{
    QByteArray bytes(256, 0);
    const quint32 aWord[] = {256, 1, g_nSide, g_nSide, 16};
    for (int i = 0; i < 5; ++i) {
        qToLittleEndian(aWord[i], bytes.data() + 4 * i);
    }
    return bytes + QByteArray(12 + g_nSide * g_nSide * 2, '\7');
}

/// A file in a folder that lasts as long as the program.
QString streamFile(const char* pName, const QByteArray& bytes)
{
    static const QTemporaryDir dir;
    QFile file(dir.filePath(QString::fromLatin1(pName)));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("cannot write %s", pName);
    }
    return file.fileName();
}

void frameStreamsPlainRead(benchmark::State& state)
{
    const QString strFile = streamFile("plain", mibFrame());
    for (auto _ : state) {
        QFile file(strFile);
        file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
        const std::unique_ptr<char[]> pBuffer(new char[static_cast<size_t>(file.size())]);
        if (file.read(pBuffer.get(), file.size()) != file.size()) {
            state.SkipWithError("not read");
        }
        benchmark::DoNotOptimize(pBuffer.get());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(frameStreamsPlainRead)->Unit(benchmark::kMicrosecond);

template <class Reader>
void readFrames(benchmark::State& state, const QString& strFile, Reader fnRead)
{
    for (auto _ : state) {
        ImageList vecImage;
        QString strReason;
        if (!fnRead(strFile, 0, 1, vecImage, strReason) || vecImage.size() != 1) {
            state.SkipWithError("not read");
        }
        benchmark::ClobberMemory();
    }
}

void frameStreamsReadMib(benchmark::State& state)
{
    readFrames(state, streamFile("frame.mib", mibFrame()), readMibFrames);
}
BENCHMARK(frameStreamsReadMib)->Unit(benchmark::kMicrosecond);

void frameStreamsReadTvips(benchmark::State& state)
{
    readFrames(state, streamFile("frame.tvips", tvipsFrame()), readTvipsFrames);
}
BENCHMARK(frameStreamsReadTvips)->Unit(benchmark::kMicrosecond);

}  // namespace

}  // namespace tessera
