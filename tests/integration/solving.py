"""What cctbx makes of the files of an integration: it reads them, merges, solves the structure and compares the atoms
with the true ones."""
import itertools
import random

import numpy as np
from cctbx import maptbx, miller
from cctbx.array_family import flex
from iotbx.shelx import crystal_symmetry_from_ins, hklf
from smtbx.ab_initio import charge_flipping


def read_shelx(base):
    """The intensities of BASE.hkl with cell and symmetry of BASE.ins, unmerged."""
    symmetry = crystal_symmetry_from_ins.extract_from(file_name=base + ".ins")
    with open(base + ".hkl") as file:
        return hklf.reader(file_object=file).as_miller_arrays(crystal_symmetry=symmetry)[0]


def normalisations(amplitudes):
    """The root mean square of the amplitudes, smooth in the resolution, so that all resolutions weigh the same."""
    square = np.array(amplitudes.d_star_sq().data())
    order = square.argsort()
    bins = np.array_split(order, max(2, len(order) // 100))
    power = np.array(amplitudes.data())**2
    logarithm = np.interp(square, [square[part].mean() for part in bins], [np.log(power[part].mean()) for part in bins])
    return miller.array(amplitudes, flex.double(np.exp(logarithm / 2)))


def solve(intensities, seed, iterations=250):
    """Structure factors in P1 by charge flipping (Oszlanyi & Suto, 2004) on normalized amplitudes. In P1, as absences alone
    rarely settle the group; the weak reflections like all others, as with a third of the data missing their phases are
    what is known least."""
    flex.set_random_seed(seed)
    random.seed(seed)
    amplitudes = intensities.as_non_anomalous_array().merge_equivalents().array().f_sq_as_f()
    amplitudes = amplitudes.select(amplitudes.data() > 0).expand_to_p1().discard_sigmas()
    normal = amplitudes.customized_copy(data=amplitudes.data() / normalisations(amplitudes).data())
    flipping = charge_flipping.basic_iterator(delta=None)
    flipping.start(normal, 2 * np.pi * flex.random_double(normal.size()))
    for n in range(iterations):
        if n < 15:
            flipping.delta = flipping.rho_map.sigma()
        next(flipping)
    return amplitudes.phase_transfer(flipping.f_calc)


def peaks_of(f_calc, count):
    """Fractional coordinates of the highest peaks of the map, one a row."""
    gridding = maptbx.crystal_gridding(f_calc.unit_cell(), space_group_info=f_calc.space_group_info(),
                                       step=0.15, symmetry_flags=maptbx.use_space_group_symmetry)
    density = miller.fft_map(gridding, f_calc).real_map_unpadded()
    found = gridding.tags().peak_search(map=density, parameters=maptbx.peak_search_parameters(
        interpolate=True, min_distance_sym_equiv=0.7, min_cross_distance=0.7)).all(max_clusters=count)
    return np.array(list(found.sites()))[:count]


def metric(cell):
    edges, cosines = np.array(cell[:3]), np.cos(np.radians(cell[3:]))
    return np.outer(edges, edges) * np.array([[1, cosines[2], cosines[1]], [cosines[2], 1, cosines[0]],
                                              [cosines[1], cosines[0], 1]])


def settings(cell, true_cell):
    """Matrices whose rows are the axes of the true cell along those of ours, of either hand."""
    ours, true = metric(cell), metric(true_cell)
    rows = [np.array(row) for row in itertools.product(range(-2, 3), repeat=3) if any(row)]
    near = [[row for row in rows if abs(row @ ours @ row / true[n, n] - 1) < 0.04] for n in range(3)]
    for axes in itertools.product(*near):
        matrix = np.array(axes)
        found = matrix @ ours @ matrix.T
        limit = 0.04 * np.sqrt(np.outer(np.diag(true), np.diag(true)))
        if abs(round(np.linalg.det(matrix))) == 1 and (np.abs(found - true) < limit).all():
            yield matrix


def atoms_in_cell(truth):
    """All atoms of a cell: the sites of a truth file under what its generators make."""
    def moved(triplet, site):
        x, y, z = site
        return np.array([float(eval(part, {"__builtins__": {}}, {"x": x, "y": y, "z": z}))
                         for part in triplet.split(",")]) % 1
    atoms = []
    for _, *site in truth["sites"]:
        orbit = [np.array(site, float) % 1]
        for place in orbit:  # grows while it is walked
            for triplet in truth["generators"]:
                new = moved(triplet, place)
                if all(np.abs((new - old + 0.5) % 1 - 0.5).max() > 1e-3 for old in orbit):
                    orbit.append(new)
        atoms += orbit
    return np.array(atoms)


def distances(atoms, peaks, root):
    """The distance of each atom to its nearest peak, Å, and the vector to it."""
    apart = (peaks[None] - atoms[:, None] + 0.5) % 1 - 0.5
    length = np.linalg.norm(apart @ root, axis=2)
    nearest = length.argmin(axis=1)
    return length.min(axis=1), apart[np.arange(len(atoms)), nearest]


def best_shift(atoms, peaks, parts=48):
    """Where the pattern of the atoms has to go to cover most of the peaks: the top of their correlation on a grid."""
    def spread(places):
        grid = np.zeros((parts,) * 3)
        np.add.at(grid, tuple(np.rint(places * parts).astype(int).T % parts), 1)
        return np.fft.rfftn(grid)
    near = np.zeros((parts,) * 3)
    for step in itertools.product((-1, 0, 1), repeat=3):
        near[step] = 1
    correlation = np.fft.irfftn(spread(peaks) * spread(atoms).conj() * np.fft.rfftn(near), s=near.shape)
    return np.array(np.unravel_index(correlation.argmax(), near.shape)) / parts


def worst_atom(peaks, cell, truth, limit=0.5):
    """The number of true atoms without a peak within the limit, the greatest and the root mean square distance of
    those that have one. Origin, hand and setting are free."""
    atoms = atoms_in_cell(truth)
    root = np.linalg.cholesky(metric(truth["cell"]))
    best = (len(atoms) + 1, np.inf, np.inf)
    for matrix in settings(cell, truth["cell"]):
        moved = peaks @ np.linalg.inv(matrix)
        start = best_shift(atoms, moved)
        for _ in range(5):
            length, apart = distances(atoms, moved - start, root)
            if (length < limit).any():
                start = start + apart[length < limit].mean(axis=0)
        hit = length[length < limit]
        if len(hit):
            best = min(best, (int(np.sum(length >= limit)), float(hit.max()), float(np.sqrt(np.mean(hit**2)))))
        if best[0] == 0:
            break
    return best
