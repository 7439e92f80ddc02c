// Reading of frames in the formats of cameras against a plain read of the same file into memory.
//
// Compare the rows of one run that have the same arguments: side in pixels, then bytes per pixel
// (2 unsigned 16-bit, 4 float). The files are in the page cache, so that this is the readers' own cost.

#include "imagefiles/cbffile.h"
#include "imagefiles/dm3file.h"
#include "imagefiles/dm4file.h"
#include "imagefiles/hdf5file.h"
#include "imagefiles/mrcfile.h"
#include "imagefiles/smvreader.h"
#include "imagefiles/tifffile.h"

#include <benchmark/benchmark.h>
#include <hdf5.h>

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <memory>
#include <vector>

namespace tessera {

namespace {

QByteArray big(quint32 nValue, int nBytes = 4)
{
    QByteArray bytes(4, 0);
    qToBigEndian(nValue, bytes.data());
    return bytes.right(nBytes);
}

QByteArray little(qint32 nValue)
{
    QByteArray bytes(4, 0);
    qToLittleEndian(nValue, bytes.data());
    return bytes;
}

QByteArray group(const QByteArray& strLabel, quint32 nChildren)
{
    return '\x14' + big(static_cast<quint32>(strLabel.size()), 2) + strLabel + QByteArray(2, 0) +
           big(nChildren);
}

QByteArray entry(const QByteArray& strLabel, const QByteArray& bytesInfo, const QByteArray& data)
{
    return '\x15' + big(static_cast<quint32>(strLabel.size()), 2) + strLabel + "%%%%" +
           big(static_cast<quint32>(bytesInfo.size() / 4)) + bytesInfo + data;
}

QByteArray big8(quint64 nValue)
{
    QByteArray bytes(8, 0);
    qToBigEndian(nValue, bytes.data());
    return bytes;
}

/// A tag of a DM4 file: a group (20) of nChildren, or an entry (21), whose children or info words and data
/// are the body.
QByteArray tag4(char chKind, const QByteArray& strLabel, quint64 nCount, const QByteArray& body)
{
    const QByteArray head = chKind == 20 ? QByteArray(2, 0) : QByteArray("%%%%");
    return chKind + big(static_cast<quint32>(strLabel.size()), 2) + strLabel +
           big8(static_cast<quint64>(head.size()) + 8 + static_cast<quint64>(body.size())) + head +
           big8(nCount) + body;
}

/// A frame as a DM4 file with as many other tags as a camera's program writes.
QByteArray dm4Frame(int nSide, int nPixelBytes, const QByteArray& pixels)
{
    const auto integer = [](const QByteArray& strLabel, qint32 nValue) {
        return tag4(21, strLabel, 1, big8(5) + little(nValue));
    };
    const QByteArray data = tag4(
        21, "Data", 3,
        big8(20) + big8(nPixelBytes == 2 ? 4 : 6) + big8(quint64(nSide) * quint64(nSide)) + pixels);
    QByteArray tags;
    for (int i = 0; i < 2000; ++i) {
        tags += integer("Some tag of the microscope", i);
    }
    const QByteArray imageData = data + integer("DataType", nPixelBytes == 2 ? 10 : 2) +
                                 tag4(20, "Dimensions", 2, integer("", nSide) + integer("", nSide));
    const QByteArray image = tag4(20, "", 2,
                                  tag4(20, "ImageData", 3, imageData) + tag4(20, "ImageTags", 2000, tags));
    return big(4) + big8(0) + big(1) + QByteArray(2, 0) + big8(1) + tag4(20, "ImageList", 1, image);
}

enum class Format { Mrc, Dm3, Dm4 };

/// A frame file of `nSide` × `nSide` pixels in a folder that lasts as long as the program.
QString frameFile(Format format, int nSide, int nPixelBytes)
{
    static const QTemporaryDir dir;
    const QString strFileName = dir.filePath(
        QStringLiteral("%1_%2.%3").arg(nSide).arg(nPixelBytes).arg(static_cast<int>(format)));
    if (QFile::exists(strFileName)) {
        return strFileName;
    }
    QByteArray pixels(nSide * nSide * nPixelBytes, 0);
    for (int i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<char>(i % 61);  // no NaN, no denormal of consequence
    }
    QByteArray bytes;
    if (format == Format::Dm4) {
        bytes = dm4Frame(nSide, nPixelBytes, pixels);
    } else if (format == Format::Dm3) {
        const quint32 nPixels = static_cast<quint32>(nSide * nSide);
        bytes = big(3) + big(0) + big(1) + QByteArray(2, 0) + big(1) + group("ImageList", 1) + group("", 3) +
                entry("Data", big(20) + big(nPixelBytes == 2 ? 4 : 6) + big(nPixels), pixels) +
                entry("DataType", big(5), little(nPixelBytes == 2 ? 10 : 2)) + group("Dimensions", 2) +
                entry("", big(5), little(nSide)) + entry("", big(5), little(nSide));
    } else {
        bytes = little(nSide) + little(nSide) + little(1) + little(nPixelBytes == 2 ? 6 : 2) +
                QByteArray(1008, 0) + pixels;
    }
    QFile file(strFileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("cannot write %s", qPrintable(strFileName));
    }
    return strFileName;
}

void sizes(benchmark::internal::Benchmark* pBenchmark)
{
    for (int nSide : {1024, 2048, 4096}) {
        for (int nPixelBytes : {2, 4}) {
            pBenchmark->Args({nSide, nPixelBytes});
        }
    }
    pBenchmark->Unit(benchmark::kMicrosecond);
}

void imageFilesPlainRead(benchmark::State& state)
{
    const QString strFileName = frameFile(Format::Mrc, static_cast<int>(state.range(0)),
                                          static_cast<int>(state.range(1)));
    for (auto _ : state) {
        QFile file(strFileName);
        file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
        const std::unique_ptr<char[]> pBuffer(new char[static_cast<size_t>(file.size())]);
        if (file.read(pBuffer.get(), file.size()) != file.size()) {
            state.SkipWithError("not read");
        }
        benchmark::DoNotOptimize(pBuffer.get());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(imageFilesPlainRead)->Apply(sizes);

void imageFilesReadMRC(benchmark::State& state)
{
    const QString strFileName = frameFile(Format::Mrc, static_cast<int>(state.range(0)),
                                          static_cast<int>(state.range(1)));
    for (auto _ : state) {
        ImageList vecImage;
        if (ReadMRC(strFileName, vecImage) != 1 || vecImage.size() != 1) {
            state.SkipWithError("not read");
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(imageFilesReadMRC)->Apply(sizes);

void imageFilesReadDM3(benchmark::State& state)
{
    const QString strFileName = frameFile(Format::Dm3, static_cast<int>(state.range(0)),
                                          static_cast<int>(state.range(1)));
    for (auto _ : state) {
        CImgObj<float> image;
        if (ReadDM3(image, strFileName) != 1) {
            state.SkipWithError("not read");
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(imageFilesReadDM3)->Apply(sizes);

/// A file of `nSide` × `nSide` pixels behind a header, in a folder that lasts as long as the program.
QString fileOfPixels(const char* pszName, int nSide, const QByteArray& bytesHeader, int nPixelBytes)
{
    static const QTemporaryDir dir;
    const QString strFileName = dir.filePath(QString::number(nSide) + QLatin1String(pszName));
    QByteArray pixels(nSide * nSide * nPixelBytes, 0);
    for (int i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<char>(i % 61);
    }
    QFile file(strFileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytesHeader + pixels) < pixels.size()) {
        qFatal("cannot write %s", qPrintable(strFileName));
    }
    return strFileName;
}

void imageFilesReadSMV(benchmark::State& state)
{
    const QByteArray bytesSide = QByteArray::number(static_cast<int>(state.range(0)));
    const QByteArray bytesHeader = "{\nHEADER_BYTES=512;\nSIZE1=" + bytesSide + ";\nSIZE2=" + bytesSide +
                                   ";\n}";
    const QString strFileName = fileOfPixels(".img", static_cast<int>(state.range(0)),
                                             bytesHeader.leftJustified(512, '\0'), 2);
    QString strReason;
    for (auto _ : state) {
        ImageList vecImage;
        if (!readSmvFrames(strFileName, 0, 1, vecImage, strReason)) {
            state.SkipWithError("not read");
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(imageFilesReadSMV)
    ->Args({1024, 2})
    ->Args({2048, 2})
    ->Args({4096, 2})
    ->Unit(benchmark::kMicrosecond);

// Packed pixels: the file has a byte for each, as those of a frame of few counts.
void imageFilesReadCBF(benchmark::State& state)
{
    const QByteArray bytesSide = QByteArray::number(static_cast<int>(state.range(0)));
    const QByteArray bytesHeader =
        "###CBF: VERSION 1.5\n--CIF-BINARY-FORMAT-SECTION--\nContent-Type: "
        "application/octet-stream;\n conversions=\"x-CBF_BYTE_OFFSET\"\nX-Binary-Size-Fastest-Dimension: " +
        bytesSide + "\nX-Binary-Size-Second-Dimension: " + bytesSide + "\n\n\x0c\x1a\x04\xd5";
    const QString strFileName = fileOfPixels(".cbf", static_cast<int>(state.range(0)), bytesHeader, 1);
    QString strReason;
    for (auto _ : state) {
        ImageList vecImage;
        if (!readCbfFrames(strFileName, 0, 1, vecImage, strReason)) {
            state.SkipWithError("not read");
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(imageFilesReadCBF)
    ->Args({1024, 1})
    ->Args({2048, 1})
    ->Args({4096, 1})
    ->Unit(benchmark::kMicrosecond);
/// A plain TIFF of strips of 8 KiB, as most programs write it.
QString tiffFile(int nSide, int nPixelBytes)
{
    static const QTemporaryDir dir;
    const QString strFileName = dir.filePath(QStringLiteral("%1_%2.tif").arg(nSide).arg(nPixelBytes));
    if (QFile::exists(strFileName)) {
        return strFileName;
    }
    const int nRows = 8192 / (nSide * nPixelBytes), nRowsPerStrip = nRows > 0 ? nRows : 1;
    const int nStrips = nSide / nRowsPerStrip, nStripBytes = nRowsPerStrip * nSide * nPixelBytes;
    const int nTags = 9, nPlaces = 8 + 2 + 12 * nTags + 4, nLengths = nPlaces + 4 * nStrips;
    const int aTag[nTags][3] = {{256, 1, nSide},
                                {257, 1, nSide},
                                {258, 1, 8 * nPixelBytes},
                                {262, 1, 1},
                                {273, nStrips, nPlaces},
                                {277, 1, 1},
                                {278, 1, nRowsPerStrip},
                                {279, nStrips, nLengths},
                                {339, 1, nPixelBytes == 2 ? 1 : 3}};
    QByteArray bytes = QByteArray("II*\0", 4) + little(8) + little(nTags).left(2);
    for (const auto& [nTag, nCount, nValue] : aTag) {
        bytes += little(nTag).left(2) + little(4).left(2) + little(nCount) + little(nValue);
    }
    bytes += little(0);
    for (int i = 0; i < nStrips; ++i) {
        bytes += little(nLengths + 4 * nStrips + i * nStripBytes);
    }
    for (int i = 0; i < nStrips; ++i) {
        bytes += little(nStripBytes);
    }
    for (int i = 0; i < nSide * nSide * nPixelBytes; ++i) {
        bytes += static_cast<char>(i % 61);
    }
    QFile file(strFileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("cannot write %s", qPrintable(strFileName));
    }
    return strFileName;
}

void imageFilesReadTIFF(benchmark::State& state)
{
    const QString strFileName = tiffFile(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    for (auto _ : state) {
        ImageList vecImage;
        QString strReason;
        if (!readTiffFrames(strFileName, 0, 1, vecImage, strReason) || vecImage.size() != 1) {
            state.SkipWithError("not read");
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(imageFilesReadTIFF)->Apply(sizes);

void imageFilesReadDM4(benchmark::State& state)
{
    const QString strFileName = frameFile(Format::Dm4, static_cast<int>(state.range(0)),
                                          static_cast<int>(state.range(1)));
    for (auto _ : state) {
        ImageList vecImage;
        QString strReason;
        if (!readDm4Frames(strFileName, 0, 1, vecImage, strReason)) {
            state.SkipWithError("not read");
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(imageFilesReadDM4)->Apply(sizes);

/// A plain data file of a detector with one image.
QString hdf5File(int nSide, int nPixelBytes)
{
    static const QTemporaryDir dir;
    const QString strFileName = dir.filePath(QStringLiteral("%1_%2.h5").arg(nSide).arg(nPixelBytes));
    if (QFile::exists(strFileName)) {
        return strFileName;
    }
    const std::vector<char> vecPixel(size_t(nSide) * size_t(nSide) * size_t(nPixelBytes), 1);
    const hsize_t anLength[] = {1, hsize_t(nSide), hsize_t(nSide)};
    const hid_t idType = nPixelBytes == 2 ? H5T_STD_U16LE : H5T_IEEE_F32LE;
    const hid_t idFile = H5Fcreate(QFile::encodeName(strFileName).constData(), H5F_ACC_TRUNC, H5P_DEFAULT,
                                   H5P_DEFAULT);
    const hid_t idParents = H5Pcreate(H5P_LINK_CREATE), idSpace = H5Screate_simple(3, anLength, nullptr);
    H5Pset_create_intermediate_group(idParents, 1);
    const hid_t idSet = H5Dcreate2(idFile, "entry/data/data", idType, idSpace, idParents, H5P_DEFAULT,
                                   H5P_DEFAULT);
    if (H5Dwrite(idSet, idType, H5S_ALL, H5S_ALL, H5P_DEFAULT, vecPixel.data()) < 0) {
        qFatal("cannot write %s", qPrintable(strFileName));
    }
    H5Dclose(idSet);
    H5Sclose(idSpace);
    H5Pclose(idParents);
    H5Fclose(idFile);
    return strFileName;
}

void imageFilesReadHDF5(benchmark::State& state)
{
    const QString strFileName = hdf5File(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    for (auto _ : state) {
        ImageList vecImage;
        QString strReason;
        if (!readHdf5Frames(strFileName, 0, 1, vecImage, strReason)) {
            state.SkipWithError("not read");
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(imageFilesReadHDF5)->Apply(sizes);

}  // namespace

}  // namespace tessera
