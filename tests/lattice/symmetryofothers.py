"""Bravais types of random lattices with errors: tessera-latticesymmetry beside gemmi and cctbx.

Usage: symmetryofothers.py FOLDER_OF_PROGRAMS. Ends with 77 (skipped) if a library is missing, after all others passed.
"""
import importlib
import math
import subprocess
import sys

BIN, SKIPPED, LIMIT, ERROR, CELLS_OF_A_TYPE = sys.argv[1], 77, 3.0, 0.005, 4


def library(name):
    try:
        return importlib.import_module(name)
    except ImportError:
        print("skipped, not installed:", name)
        return None


np, gemmi, crystal, lattice_symmetry = map(
    library, ["numpy", "gemmi", "cctbx.crystal", "cctbx.sgtbx.lattice_symmetry"])
if not np or not (gemmi or lattice_symmetry):
    sys.exit(SKIPPED)
random = np.random.default_rng(5)
PRIMITIVE = {
    "P": np.eye(3),
    "C": [[.5, .5, 0], [-.5, .5, 0], [0, 0, 1]],
    "I": [[-.5, .5, .5], [.5, -.5, .5], [.5, .5, -.5]],
    "F": [[0, .5, .5], [.5, 0, .5], [.5, .5, 0]],
    "R": np.array([[2, 1, 1], [-1, 1, 1], [-1, -2, 1]]) / 3,
}
SYMBOL_OF_CCTBX = {"P -1": "aP", "P 1 2/m 1": "mP", "C 1 2/m 1": "mC", "I 1 2/m 1": "mC", "A 1 2/m 1": "mC",
                   "P m m m": "oP", "C m m m": "oC", "A m m m": "oC", "B m m m": "oC", "I m m m": "oI",
                   "F m m m": "oF", "P 4/m m m": "tP", "I 4/m m m": "tI", "R -3 m :H": "hR", "P 6/m m m": "hP",
                   "P m -3 m": "cP", "I m -3 m": "cI", "F m -3 m": "cF"}


def metric(cell):
    edges, cosines = np.array(cell[:3]), np.cos(np.radians(cell[3:]))
    return np.outer(edges, edges) * np.array([[1, cosines[2], cosines[1]], [cosines[2], 1, cosines[0]],
                                              [cosines[1], cosines[0], 1]])


def six_numbers(basis):
    product = basis @ basis.T
    edges = np.sqrt(np.diag(product))
    cosines = product / np.outer(edges, edges)
    return [*edges, *np.degrees(np.arccos([cosines[1, 2], cosines[0, 2], cosines[0, 1]]))]


def random_cell(symbol):
    a, b, c = random.uniform(4, 20, 3)
    cell = {"a": [a, b, c, *random.uniform(75, 105, 3)], "m": [a, b, c, 90, random.uniform(91, 115), 90],
            "o": [a, b, c, 90, 90, 90], "t": [a, a, c, 90, 90, 90], "h": [a, a, c, 90, 90, 120],
            "c": [a, a, a, 90, 90, 90]}[symbol[0]]
    basis = PRIMITIVE[symbol[1]] @ np.linalg.cholesky(metric(cell)) @ (np.eye(3) + random.normal(0, ERROR, (3, 3)))
    for row in random.integers(0, 3, 3):
        basis[row] += random.choice([-1, 1]) * basis[row - 1]
    return six_numbers(basis)


def same(symbol, cell, other):
    """The six numbers agree. Of a monoclinic cell, which the other side sometimes has acute or in a setting with
    a larger angle: the axis, the area across it, and an angle that is no farther from 90 degrees."""
    if symbol[0] != "m":
        return all(abs(x - y) < 2e-3 for x, y in zip(cell, other))
    a, b, c, _, beta, _ = cell
    other_a, other_b, other_c, _, other_beta, _ = other
    area, other_area = a * c * math.sin(math.radians(beta)), other_a * other_c * math.sin(math.radians(other_beta))
    return abs(b - other_b) < 2e-3 and abs(area / other_area - 1) < 1e-4 and 90 <= beta < 90.002 + abs(other_beta - 90)


cells = [random_cell(symbol) for symbol in "aP mP mC oP oC oI oF tP tI hR hP cP cI cF".split()
         for _ in range(CELLS_OF_A_TYPE)]
answer = subprocess.run(
    [f"{BIN}/tessera-latticesymmetry"], check=True, text=True, stdout=subprocess.PIPE,
    input="".join(" ".join(f"{x:.9f}" for x in cell) + f" {LIMIT}\n" for cell in cells)).stdout
blocks = answer.strip().split("\n\n")
assert len(blocks) == len(cells)
rows_compared, ours_alone = 0, 0
for cell, block in zip(cells, blocks):
    rows = [line.split() for line in block.split("\n")]
    ours = [(row[0], float(row[3]), [float(x) for x in row[15:]]) for row in rows]
    for row in rows:  # the matrix and the constrained cell, by algebra of its own
        matrix = np.array(row[6:15], int).reshape(3, 3)
        points = {"P": 1, "C": 2, "I": 2, "R": 3, "F": 4}[row[1]]
        assert round(np.linalg.det(matrix)) == points, row
        measured = six_numbers(matrix @ np.linalg.cholesky(metric(cell)))
        worst = np.abs(np.array(measured) - [float(x) for x in row[15:]])
        assert abs(max(worst[3:]) - float(row[5])) < 1e-5, row
    if gemmi:
        reduction = gemmi.GruberVector(gemmi.UnitCell(*cell), "P")
        reduction.niggli_reduce()
        theirs = [delta for _, delta in gemmi.find_lattice_2fold_ops(reduction.get_cell(), LIMIT)]
        turns = sorted(delta for symbol, delta, _ in ours if symbol[0] == "m")
        # gemmi's table is for exact reduced cells; with errors more cases are possible.
        assert all(any(abs(x - y) < 1e-4 for y in turns) for x in theirs), (cell, theirs, turns)
    if lattice_symmetry:  # from the reduced cell, as it cannot take every other one
        symmetry = crystal.symmetry(unit_cell=ours[-1][2], space_group_symbol="P1")
        for group in lattice_symmetry.metric_subgroups(symmetry, LIMIT).result_groups:
            best = group["best_subsym"]
            symbol = SYMBOL_OF_CCTBX[str(best.space_group_info())]
            delta, numbers = group["max_angular_difference"], best.unit_cell().parameters()
            found = [row for row in ours
                     if row[0] == symbol and abs(row[1] - delta) < 1e-3 and same(symbol, row[2], numbers)]
            assert found, (cell, symbol, delta, numbers, ours)
            ours.remove(found[0])
            rows_compared += 1
        ours_alone += len(ours)
print(rows_compared, "rows of cctbx found,", ours_alone, "rows that it has not")
assert not lattice_symmetry or rows_compared > 5 * len(cells)
sys.exit(0 if gemmi and lattice_symmetry else SKIPPED)
