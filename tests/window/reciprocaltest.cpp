#include "reciprocaltest.h"

QTemporaryDir* Reciprocal::s_pSeries = nullptr;

static Vec cross(const Vec& u, const Vec& v)
{
    return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

Mat dual(const Mat& m)
{
    Mat result;
    for (size_t i = 0; i < 3; ++i) {
        result[i] = cross(m[(i + 1) % 3], m[(i + 2) % 3]);
        for (double& df : result[i])
            df /= dot(m[0], cross(m[1], m[2]));
    }
    return result;
}

Mat times(const Mat& m, const Mat& n)
{
    Mat result{};
    for (size_t i = 0; i < 3; ++i)
        for (size_t j = 0; j < 3; ++j)
            for (size_t k = 0; k < 3; ++k)
                result[i][j] += m[i][k] * n[k][j];
    return result;
}

QString fieldsOf(const Mat& matReciprocal)
{
    const Mat m = dual(matReciprocal);
    QStringList list;
    for (const Vec& v : m)
        list.append(QLocale::system().toString(std::sqrt(dot(v, v)), 'f', 2));
    for (size_t i = 0; i < 3; ++i) {
        const Vec &u = m[(i + 1) % 3], &v = m[(i + 2) % 3];
        const double dfAngle = std::acos(dot(u, v) / std::sqrt(dot(u, u) * dot(v, v))) * 180 / M_PI;
        list.append(QLocale::system().toString(dfAngle, 'f', 2));
    }
    return list.join(' ');
}

void expectNear(const Mat& m, const Mat& matWanted, double dfTolerance)
{
    for (size_t i = 0; i < 9; ++i)
        EXPECT_NEAR(m[i / 3][i % 3], matWanted[i / 3][i % 3], dfTolerance) << i;
}

void Reciprocal::SetUpTestSuite()
{
    s_pSeries = new QTemporaryDir;
    simulate(s_pSeries->path(), "--frames 31 --size 192 --pixel-size 0.01 --tilt-start -15 --tilt-step 1");
    ASSERT_EQ(runBatch({"--window-defaults", "--to", "cell", file("w.ed3d")}).nStatus, 0);
}

void Reciprocal::SetUp()
{
    WindowTest::SetUp();
    m_pWindow->show();
}

void Reciprocal::loadCell(const Mat& m)
{
    QByteArray bytes;
    for (size_t i = 0; i < 3; ++i)
        bytes +=
            QString::asprintf("%c* %.8f %.8f %.8f\n", int('a' + i), m[i][0], m[i][1], m[i][2]).toLatin1();
    answered({write("in.uc", bytes)}, [this] { m_pWindow->loadUnitCell(); });
}

Mat Reciprocal::cell()
{
    QFile::remove(path("out.uc"));
    answered({path("out.uc")}, [this] { m_pWindow->exportUnitCell(); });
    Mat m{};
    const QList<QByteArray> list = readBytes(path("out.uc")).simplified().split(' ');
    for (int i = 0; i < 9 && list.size() >= 12; ++i)
        m[size_t(i) / 3][size_t(i) % 3] = list[list.size() - 12 + i / 3 * 4 + 1 + i % 3].toDouble();
    return m;
}

QString Reciprocal::fields() const
{
    QStringList list;
    for (QLineEdit* pEdit : m_pCell->m_apEditCell)
        list.append(pEdit->text());
    return list.join(' ');
}

void Reciprocal::type(const Mat& m)
{
    for (size_t i = 0; i < 9; ++i)
        m_pCell->m_apEditMatrix[i / 3][i % 3]->setText(QLocale::system().toString(m[i / 3][i % 3]));
    QTest::keyClick(m_pCell->m_apEditMatrix[2][2], Qt::Key_Return);
}

void Reciprocal::typeOver(QWidget* pBox, QString strText)
{
    ASSERT_NO_FATAL_FAILURE(activate());
    auto* pToolBox = m_pWindow->findChild<QToolBox*>();
    for (int i = 0; i < pToolBox->count() && !pBox->isVisible(); ++i)
        pToolBox->setCurrentIndex(i);
    pBox->setFocus();
    ASSERT_TRUE(pBox->hasFocus()) << strText.toStdString();
    QTest::keyClick(pBox, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(pBox, strText.replace('.', QLocale::system().decimalPoint()));
}

QString Reciprocal::groups(const ED3DWidget* pView)
{
    QStringList list;
    for (int g = 0; g < pView->groupLabels().size(); ++g)
        list.append(pView->groupLabels()[g] + ' ' + QString::number(pView->groupPoints()[g].size()) + ' ' +
                    pView->groupColors()[g].name());
    return list.join(", ");
}
