// CMrcWriter: writes an MRC stack section by section.
#pragma once

#include "records/wholefile.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace tessera {

/// What a header can tell besides size and type.
struct MrcNotes {
    double dfPixelSize = 1;  ///< size of a pixel along all axes, in the unit that a label names
    int nStartX = 0;         ///< distance of the first column from the origin, pixels
    int nStartY = 0;         ///< distance of the lowest row from the origin, pixels
    float fMinimum = 0;      ///< of all values
    float fMaximum = 0;
    float fMean = 0;
    float fDeviation = 0;   ///< root mean square from the mean
    QStringList listLabel;  ///< at most ten, of 80 characters of ASCII
};

/// Writes a stack of which only one section at a time is in memory. `T` is `float` (MODE 2), `short` (1) or
/// `unsigned short` (6).
///
/// Rows are stored bottom up, as ReadMRC() expects them. The cell is NX, NY, NZ; without notes, density
/// statistics, map word and labels are zero. commit() puts the file in place; without it nothing is
/// written.
/// Source: Cheng et al. (2015), J. Struct. Biol. 192, 146.
template <class T>
class CMrcWriter {
public:
    CMrcWriter() = default;
    CMrcWriter(const CMrcWriter&) = delete;
    CMrcWriter& operator=(const CMrcWriter&) = delete;

    /// Begins a file of nZ sections of nX columns and nY rows, all at least 0. Can be called once per
    /// object.
    /// @param pNotes  null: the header is that of the format before it had map word, labels and version
    /// @return false when the file cannot be created or written, or memory for a section runs out
    bool open(const QString& strFileName, int nX, int nY, int nZ, const MrcNotes* pNotes = nullptr);
    /// Appends a section of nX × nY values, the first row of the image first.
    /// @return false when it cannot be written, or no file is open
    bool addSection(const T* pData);
    /// Puts the file in place.
    /// @param pstrReason  may be null; takes on failure the file's name and what is wrong
    /// @return false, with a former file as it was, when anything went wrong since open() or sections are
    ///         missing
    bool commit(QString* pstrReason = nullptr);

private:
    CWholeFile m_file;
    std::unique_ptr<T[]> m_pMirrored;
    int m_nX = 0;
    int m_nY = 0;
    int m_nMissing = 0;  ///< number of sections that are not written yet
    bool m_bOk = false;
};

extern template class CMrcWriter<float>;
extern template class CMrcWriter<short>;
extern template class CMrcWriter<unsigned short>;

}  // namespace tessera
