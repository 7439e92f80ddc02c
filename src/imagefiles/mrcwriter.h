// CMrcWriter: an MRC stack written section by section.
#pragma once

#include "records/wholefile.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace tessera {

/// What a header tells beside the size and the type of its values.
struct MrcNotes {
    double dfPixelSize = 1;  ///< along all edges, in the unit that a label names
    int nStartX = 0;         ///< pixels, of the first column and the lowest row from the origin
    int nStartY = 0;
    float fMinimum = 0;  ///< of the values
    float fMaximum = 0;
    float fMean = 0;
    float fDeviation = 0;   ///< root mean square from the mean
    QStringList listLabel;  ///< at most ten, of 80 characters of ASCII
};

/// Writes a stack whose sections need not lie in memory together; beside them it takes room for one.
/// `T` is `float` (MODE 2), `short` (1) or `unsigned short` (6).
///
/// Rows are stored bottom up, as `ReadMRC` takes them. The cell is NX, NY, NZ; density statistics, map word
/// and labels stay zero without notes. The file appears whole under its name with commit(), or not at all.
/// Source: Cheng et al. (2015), J. Struct. Biol. 192, 146.
template <class T>
class CMrcWriter {
public:
    CMrcWriter() = default;
    CMrcWriter(const CMrcWriter&) = delete;
    CMrcWriter& operator=(const CMrcWriter&) = delete;

    /// Begins a file of nZ sections of nX columns and nY rows, none of them below 0. Once per object.
    /// @param pNotes  null: a header as it was before there were maps, labels and versions
    /// @return false when the file can't be created or written, or memory for a section runs out
    bool open(const QString& strFileName, int nX, int nY, int nZ, const MrcNotes* pNotes = nullptr);
    /// Appends a section of nX × nY values, first row of the image first.
    /// @return false when it can't be written, or nothing is open
    bool addSection(const T* pData);
    /// Puts the file in place.
    /// @param pstrReason  may be null; on failure the file's name and what is wrong
    /// @return false when anything went wrong since open() or sections are missing; a former file then
    ///         stands as it was
    bool commit(QString* pstrReason = nullptr);

private:
    CWholeFile m_file;
    std::unique_ptr<T[]> m_pMirrored;
    int m_nX = 0;
    int m_nY = 0;
    int m_nMissing = 0;  ///< sections still to come
    bool m_bOk = false;
};

extern template class CMrcWriter<float>;
extern template class CMrcWriter<short>;
extern template class CMrcWriter<unsigned short>;

}  // namespace tessera
