#include "imagefiles/dm3calibration.h"

#include "tests/imagefiles/dm3builder.h"
#include "tests/imagefiles/testfiles.h"

#include <cmath>

namespace tessera {

TEST(Dm3Calibration, VoltageAndScaleOfDiffractionPatternsOnly)
{
    const struct {
        QString strUnit;
        float fScale;
        double dfVolts, dfPixelSize, dfKilovolts;
    } aRow[] = {{"1/nm", 0.05f, 200000, 0.005, 200},
                {QStringLiteral("1/Å"), 0.004f, 300000, 0.004, 300},
                {"nm", 0.05f, 0, 0, 0},
                {"1/nm", -1, -5, 0, 0},
                {"1/nm", NAN, INFINITY, 0, 0},
                {"", 1, 80000, 0, 80}};
    for (const quint32 nOrder : {1u, 2u})
        for (const auto& row : aRow) {
            const auto real = [&](const char* pchLabel, float f) {
                return dm3::entry(pchLabel, {6}, dm3::number(f, nOrder));
            };
            QByteArray bytesUnit;
            for (const QChar c : row.strUnit)
                bytesUnit += dm3::number(c.unicode(), nOrder);
            const QByteArray dimension = dm3::group(
                "", {real("Origin", 7), real("Scale", row.fScale),
                     dm3::array("Units", 4, quint32(row.strUnit.size()), bytesUnit)});
            const QByteArray image = dm3::group(
                "",
                {dm3::group("ImageData",
                            {dm3::group("Calibrations", {dm3::group("Brightness", {real("Scale", 9)}),
                                                         dm3::group("Dimension", {dimension, dimension})})}),
                 dm3::group("ImageTags",
                            {real("Voltage", 1),
                             dm3::group("Microscope Info",
                                        {dm3::entry("Voltage", {7}, dm3::number(row.dfVolts, nOrder))})})});
            const QByteArray bytes = dm3::file({dm3::group("ImageList", {image})}, nOrder);
            DM3File file;
            ASSERT_EQ(
                file.readBytes(reinterpret_cast<const uint8_t*>(bytes.constData()), size_t(bytes.size())), 1);
            const Dm3Calibration calibration = dm3Calibration(file);
            EXPECT_NEAR(calibration.dfPixelSize, row.dfPixelSize, 1e-9) << row.strUnit.toStdString();
            EXPECT_EQ(calibration.dfKilovolts, row.dfKilovolts);
        }
    const Dm3Calibration none = dm3Calibration(DM3File());
    EXPECT_EQ(none.dfKilovolts, 0);
    EXPECT_EQ(none.dfPixelSize, 0);
}

}  // namespace tessera
