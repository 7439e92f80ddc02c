#include "lattice/cellfromcif.h"

#include "lattice/knowncell.h"
#include "records/reason.h"
#include "records/regularfile.h"

#include <gemmi/numb.hpp>

#include <QByteArray>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace tessera {

namespace {

constexpr qint64 g_nMostBytes = 64 << 20;

const std::array<const char*, 6> g_aTag = {"_cell_length_a",    "_cell_length_b",   "_cell_length_c",
                                           "_cell_angle_alpha", "_cell_angle_beta", "_cell_angle_gamma"};

/// Splits a CIF file into words: names, values without their quotes, and text fields, each as one word.
class CCifWords {
public:
    explicit CCifWords(const QByteArray& bytes) : m_bytes(bytes) {}

    /// Goes to the next word.
    /// @return false at the end of the file, and where a quote or a text field is not closed
    bool next();
    const QByteArray& word() const { return m_word; }
    /// Whether the word is a value. Quoted words always are.
    bool isValue() const { return m_bQuoted || !(isName() || isKeyword()); }
    bool isName() const { return !m_bQuoted && m_word.startsWith('_'); }
    bool startsBlock() const { return !m_bQuoted && m_word.toLower().startsWith("data_"); }
    bool startsLoop() const { return !m_bQuoted && m_word.toLower() == "loop_"; }

private:
    static bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
    bool isKeyword() const
    {
        const QByteArray lower = m_word.toLower();
        return startsBlock() || startsLoop() || lower.startsWith("save_") || lower == "global_" ||
               lower == "stop_";
    }
    void skipBlanks();
    bool nextTextField();
    bool nextQuoted(char chQuote);

    const QByteArray& m_bytes;
    QByteArray m_word;
    int m_nPlace = 0;
    bool m_bQuoted = false;
};

void CCifWords::skipBlanks()
{
    while (m_nPlace < m_bytes.size() && (isBlank(m_bytes[m_nPlace]) || m_bytes[m_nPlace] == '#')) {
        if (m_bytes[m_nPlace] == '#') {
            const int nEnd = m_bytes.indexOf('\n', m_nPlace);
            m_nPlace = nEnd < 0 ? m_bytes.size() : nEnd;
        } else {
            ++m_nPlace;
        }
    }
}

bool CCifWords::nextTextField()
{
    const int nEnd = m_bytes.indexOf("\n;", m_nPlace);
    m_word = nEnd < 0 ? QByteArray() : m_bytes.mid(m_nPlace + 1, nEnd - m_nPlace - 1);
    m_nPlace = nEnd < 0 ? m_bytes.size() : nEnd + 2;
    return nEnd >= 0;
}

bool CCifWords::nextQuoted(char chQuote)
{
    for (int n = m_nPlace + 1; n < m_bytes.size() && m_bytes[n] != '\n'; ++n) {
        if (m_bytes[n] == chQuote && (n + 1 == m_bytes.size() || isBlank(m_bytes[n + 1]))) {
            m_word = m_bytes.mid(m_nPlace + 1, n - m_nPlace - 1);
            m_nPlace = n + 1;
            return true;
        }
    }
    m_nPlace = m_bytes.size();
    return false;
}

bool CCifWords::next()
{
    skipBlanks();
    if (m_nPlace >= m_bytes.size()) {
        return false;
    }
    const char ch = m_bytes[m_nPlace];
    m_bQuoted = true;
    if (ch == ';' && (m_nPlace == 0 || m_bytes[m_nPlace - 1] == '\n')) {
        return nextTextField();
    }
    if (ch == '\'' || ch == '"') {
        return nextQuoted(ch);
    }
    m_bQuoted = false;
    int nEnd = m_nPlace;
    while (nEnd < m_bytes.size() && !isBlank(m_bytes[nEnd])) {
        ++nEnd;
    }
    m_word = m_bytes.mid(m_nPlace, nEnd - m_nPlace);
    m_nPlace = nEnd;
    return true;
}

/// Which of the six numbers a name means, 0 to 5; −1 for another name. The case of letters is ignored.
int numberOfTag(const QByteArray& name)
{
    const QByteArray lower = name.toLower();
    for (size_t n = 0; n < g_aTag.size(); ++n) {
        // The macromolecular dictionary has "_cell." in place of "_cell_".
        if (lower == g_aTag[n] || lower == QByteArray(g_aTag[n]).replace(0, 6, "_cell.")) {
            return int(n);
        }
    }
    return -1;
}

/// The texts of the six numbers of a data block; null where a number is missing.
using CellTexts = std::array<QByteArray, 6>;

bool isWhole(const CellTexts& aText)
{
    return std::none_of(aText.begin(), aText.end(), [](const QByteArray& text) { return text.isNull(); });
}

/// The texts of the first block that has all six, or else of the last block.
CellTexts findTexts(const QByteArray& bytes)
{
    CellTexts aText;
    CCifWords words(bytes);
    bool bMore = words.next();
    while (bMore && !isWhole(aText)) {
        std::vector<int> listTag;
        if (words.startsBlock()) {
            aText = {};
        }
        const bool bLoop = words.startsLoop();
        if (bLoop) {
            for (bMore = words.next(); bMore && words.isName(); bMore = words.next()) {
                listTag.push_back(numberOfTag(words.word()));
            }
        } else if (words.isName()) {
            listTag.push_back(numberOfTag(words.word()));
            bMore = words.next();
        } else {
            bMore = words.next();
        }
        for (size_t n = 0; n < listTag.size() && bMore && words.isValue(); ++n, bMore = words.next()) {
            if (listTag[n] >= 0 && aText[size_t(listTag[n])].isNull()) {
                aText[size_t(listTag[n])] = words.word();
            }
        }
    }
    return aText;
}

}  // namespace

std::optional<CellParameters> cellFromCif(const QString& strFileName, QString* pstrReason)
{
    const auto refuse = [&](const QString& strReason) -> std::optional<CellParameters> {
        giveReason(pstrReason, strFileName, strReason);
        return std::nullopt;
    };
    QFile file(strFileName);
    QString strReason;
    if (!openRegularFile(file, QIODevice::ReadOnly, strReason)) {
        return refuse(strReason);
    }
    if (file.size() > g_nMostBytes) {
        return refuse(QStringLiteral("the file is too large for a CIF file of a crystal"));
    }
    QByteArray bytes = file.read(g_nMostBytes);
    bytes.replace("\r\n", "\n").replace('\r', '\n');
    if (bytes.startsWith("\xef\xbb\xbf")) {
        bytes.remove(0, 3);
    }
    const CellTexts aText = findTexts(bytes);
    std::array<double, 6> aNumber = {};
    for (size_t n = 0; n < aText.size(); ++n) {
        const QString strTag = QLatin1String(g_aTag[n]);
        if (aText[n].isNull()) {
            return refuse(QStringLiteral("no %1 in the file").arg(strTag));
        }
        const QByteArray trimmed = aText[n].trimmed();
        aNumber[n] = gemmi::cif::as_number(std::string(trimmed.constData(), size_t(trimmed.size())));
        if (!std::isfinite(aNumber[n])) {
            return refuse(QStringLiteral("%1 is no number: \"%2\"")
                              .arg(strTag, QString::fromUtf8(trimmed.left(40)).simplified()));
        }
    }
    const CellParameters cell = {aNumber[0], aNumber[1], aNumber[2], aNumber[3], aNumber[4], aNumber[5]};
    if (!basisOfCell(cell)) {
        return refuse(QStringLiteral("the six numbers make no cell"));
    }
    return cell;
}

}  // namespace tessera
