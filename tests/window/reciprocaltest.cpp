#include "tests/window/reciprocaltest.h"

namespace tessera {

QString fieldsOf(const Mat& matReciprocal)
{
    QStringList list;
    for (double df : cellOfReciprocalBasis(matReciprocal)) {
        list.append(QLocale::system().toString(df, 'f', 2));
    }
    return list.join(' ');
}

void expectNear(const Mat& m, const Mat& matWanted, double dfTolerance)
{
    for (size_t i = 0; i < 9; ++i) {
        EXPECT_NEAR(m[i / 3][i % 3], matWanted[i / 3][i % 3], dfTolerance) << i;
    }
}

void Reciprocal::SetUpTestSuite()
{
    makeSeries("--frames 31 --size 192 --pixel-size 0.01 --tilt-start -15 --tilt-step 1", "cell");
}

void Reciprocal::SetUp()
{
    SeriesTest::SetUp();
    m_pWindow->show();
}

void Reciprocal::loadCell(const Mat& m)
{
    QByteArray bytes;
    for (size_t i = 0; i < 3; ++i) {
        bytes +=
            QString::asprintf("%c* %.8f %.8f %.8f\n", int('a' + i), m[i][0], m[i][1], m[i][2]).toLatin1();
    }
    answered({write("in.uc", bytes)}, [this] { m_pWindow->loadUnitCell(); });
}

Mat Reciprocal::cell()
{
    QFile::remove(path("out.uc"));
    answered({path("out.uc")}, [this] { m_pWindow->exportUnitCell(); });
    Mat m{};
    const QList<QByteArray> list = readBytes(path("out.uc")).simplified().split(' ');
    for (int i = 0; i < 9 && list.size() >= 12; ++i) {
        m[size_t(i) / 3][size_t(i) % 3] = list[list.size() - 12 + i / 3 * 4 + 1 + i % 3].toDouble();
    }
    return m;
}

QString Reciprocal::fields() const
{
    QStringList list;
    for (QLineEdit* pEdit : m_pCell->m_apEditCell) {
        list.append(pEdit->text());
    }
    return list.join(' ');
}

void Reciprocal::type(const Mat& m)
{
    for (size_t i = 0; i < 9; ++i) {
        m_pCell->m_apEditMatrix[i / 3][i % 3]->setText(QLocale::system().toString(m[i / 3][i % 3]));
    }
    QTest::keyClick(m_pCell->m_apEditMatrix[2][2], Qt::Key_Return);
}

void Reciprocal::typeOver(QWidget* pBox, QString strText)
{
    ASSERT_NO_FATAL_FAILURE(activate());
    auto* pToolBox = m_pWindow->findChild<QToolBox*>();
    for (int i = 0; i < pToolBox->count() && !pBox->isVisible(); ++i) {
        pToolBox->setCurrentIndex(i);
    }
    pBox->setFocus();
    ASSERT_TRUE(pBox->hasFocus()) << strText.toStdString();
    QTest::keyClick(pBox, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(pBox, strText.replace('.', QLocale::system().decimalPoint()));
}

QString Reciprocal::groups(const ED3DWidget* pView)
{
    QStringList list;
    for (int g = 0; g < pView->groupLabels().size(); ++g) {
        list.append(pView->groupLabels()[g] + ' ' + QString::number(pView->groupPoints()[g].size()) + ' ' +
                    pView->groupColors()[g].name());
    }
    return list.join(", ");
}

}  // namespace tessera
