"""Trees of mean distances: the project's beside scipy's.

Usage: treesofscipy.py FOLDER_OF_PROGRAMS. Ends with 77 (skipped) where scipy or the test program is not there.
"""
import os
import subprocess
import sys
import tempfile

SKIPPED, CUT = 77, 0.45
program = f"{sys.argv[1]}/test_crystals"
try:
    import numpy as np
    from scipy.cluster.hierarchy import fcluster, linkage
except ImportError as error:
    print("skipped, not installed:", error)
    sys.exit(SKIPPED)
if not os.path.exists(program):
    print("skipped, not built:", program)
    sys.exit(SKIPPED)

random = np.random.default_rng(3)
for count in [2, 3, 5, 17, 60, 300]:
    for kind in range(3):
        # By chance; places in a plane in clusters, as crystals of some compounds are; on a line.
        if kind == 0:
            distances = random.random(count * (count - 1) // 2)
        else:
            places = random.normal(0, 0.1, (count, 3 - kind)) + 0.5 * random.integers(0, 4, (count, 1))
            one, other = np.triu_indices(count, 1)
            distances = np.linalg.norm(places[one] - places[other], axis=1)
        with tempfile.TemporaryDirectory() as folder:
            with open(folder + "/distances.txt", "w") as file:
                print(count, *map(repr, map(float, distances)), file=file)
            answer = subprocess.run([program, "--gtest_filter=Linkage.ofDistancesFromAFile"], text=True,
                                    env=dict(os.environ, TESSERA_TREES=folder), stdout=subprocess.PIPE)
            assert answer.returncode == 0, answer.stdout
            with open(folder + "/joints.txt") as file:
                lines = [line.split() for line in file]
        ours = np.array(lines[:-1], float)
        theirs = linkage(distances, "average")
        assert ours.shape == theirs.shape
        assert (ours[:, [0, 1, 3]] == theirs[:, [0, 1, 3]]).all(), (count, kind)
        assert np.abs(ours[:, 2] - theirs[:, 2]).max() < 1e-12
        number = {}  # scipy's clusters by the first of their members
        clusters = [number.setdefault(name, len(number)) for name in fcluster(theirs, CUT, "distance")]
        assert clusters == list(map(int, lines[-1])), (count, kind)
print("18 trees are those of scipy")
