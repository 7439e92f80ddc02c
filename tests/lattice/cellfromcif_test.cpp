// The cell out of CIF files as programs write them, and as nobody should.
#include "lattice/cellfromcif.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace tessera {
namespace {

const QByteArray g_good =
    "data_garnet\n"
    "_cell_length_a    12.14(2)\n_cell_length_b 1.214e1\n_cell_length_c '12.140'\n"
    "_cell_angle_alpha 90\n_cell_angle_beta 90.0(1)\n_cell_angle_gamma 90.\n";

class CellFromCif : public testing::Test {
protected:
    std::optional<CellParameters> read(const QByteArray& bytes)
    {
        QFile file(m_folder.filePath(QStringLiteral("crystal.cif")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        m_strReason.clear();
        return cellFromCif(file.fileName(), &m_strReason);
    }

    QTemporaryDir m_folder;
    QString m_strReason;
};

TEST_F(CellFromCif, NumbersStandInManyForms)
{
    const QByteArray strLoop =
        "loop_\n_cell_length_a\n_cell_length_b _cell_length_c\n_cell_angle_alpha\n"
        "_cell_angle_beta _cell_angle_gamma _cell_extra\n"
        "12.14(2) 12.14 12.14 90 90 90 'it is'\n 1 2 3 4 5 6 7\n";
    const std::vector<QByteArray> listCase = {
        g_good,
        "\xef\xbb\xbf# a comment with _cell_length_a 3\n" + QByteArray(g_good).replace('\n', "\r\n"),
        QByteArray(g_good).replace("_cell_length_a", "_CELL_Length_A").toUpper().replace("DATA_", "data_"),
        QByteArray(g_good).replace("_cell_length_", "_cell.length_").replace("_cell_angle_", "_cell.angle_"),
        "data_global\n_cell_length_a 3\n_note\n;\n_cell_length_a 5\ndata_no\n;\n_a.b 'it's' # quote\n" +
            g_good,
        "data_x\n" + strLoop,
        "data_y\nloop_\n_atom_label\n_atom_x\nC1 0.5(1)\nO1 '0.2'\n" + g_good.mid(12),
        "data_z\n_cell_length_a ?\n" + g_good + "data_second\n_cell_length_a 3\n",
    };
    for (const QByteArray& bytes : listCase) {
        const auto cell = read(bytes);
        ASSERT_TRUE(cell) << bytes.toStdString() << m_strReason.toStdString();
        for (const double dfLength : {cell->a, cell->b, cell->c}) {
            EXPECT_EQ(dfLength, 12.14) << bytes.toStdString();
        }
        EXPECT_EQ(cell->beta, 90) << bytes.toStdString();
        EXPECT_TRUE(m_strReason.isEmpty());
    }
}

TEST_F(CellFromCif, DamagedFilesAreRefusedWithTheReason)
{
    const std::vector<std::pair<QByteArray, const char*>> listCase = {
        {"", "no _cell_length_a"},
        {"data_x\nloop_\n_cell_length_a", "no _cell_length_a"},
        {"data_x\n_cell_length_a 'open\n" + g_good, "no _cell_length_a"},
        {"data_x\n_cell_length_a\n;text without an end", "no _cell_length_a"},
        {QByteArray(g_good).replace("12.14(2)", "?"), "_cell_length_a is no number"},
        {QByteArray(g_good).replace("12.14(2)", "12,14"), "_cell_length_a is no number"},
        {QByteArray(g_good).replace("12.14(2)", "12.14(2"), "_cell_length_a is no number"},
        {QByteArray(g_good).replace("12.14(2)", "nan"), "_cell_length_a is no number"},
        {QByteArray(g_good).replace("12.14(2)", "1e999"), "_cell_length_a is no number"},
        {QByteArray(g_good).replace("12.14(2)", "-12.14"), "make no cell"},
        {QByteArray(g_good).replace("90.\n", "0\n"), "make no cell"},
        {QByteArray(g_good).replace("_cell_angle_beta", "_cell_angle_bet"), "no _cell_angle_beta"},
        {QByteArray(100000, '\0') + "_cell_length_a", "no _cell_length_a"},
        {QByteArray("loop_ ").repeated(20000), "no _cell_length_a"},
    };
    for (const auto& [bytes, pszReason] : listCase) {
        const auto cell = read(bytes);
        EXPECT_FALSE(cell) << bytes.left(200).toStdString();
        EXPECT_TRUE(m_strReason.contains(QLatin1String(pszReason))) << m_strReason.toStdString();
        EXPECT_TRUE(m_strReason.contains(QStringLiteral("crystal.cif")));
    }
    for (int nSize = g_good.size() - 4; nSize >= 0; --nSize) {
        EXPECT_FALSE(read(g_good.left(nSize))) << nSize;
    }
    EXPECT_FALSE(cellFromCif(m_folder.path(), &m_strReason));
    EXPECT_FALSE(cellFromCif(m_folder.filePath(QStringLiteral("none.cif")), nullptr));
}

}  // namespace
}  // namespace tessera
