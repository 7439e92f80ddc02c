#include "lattice/conventionalsetting.h"

namespace tessera {

ReciprocalBasis inConventionalSetting(const ReciprocalBasis& basis, const LatticeSymmetry& symmetry)
{
    return reciprocalBasisOf(symmetry.matTransform.cast<double>() * latticeBasisOf(basis));
}

CMatrix3 transformationMatrix(const LatticeSymmetry& symmetry, TransformationSpace space)
{
    Eigen::Matrix3d mat = symmetry.matTransform.cast<double>();
    if (space == TransformationSpace::Reciprocal) {
        mat = mat.inverse().transpose().eval();
    }
    return {mat(0, 0), mat(0, 1), mat(0, 2), mat(1, 0), mat(1, 1),
            mat(1, 2), mat(2, 0), mat(2, 1), mat(2, 2)};
}

}  // namespace tessera
