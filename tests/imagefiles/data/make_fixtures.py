#!/usr/bin/python3
"""Makes the MRC fixtures of this folder with mrcfile (python3-mrcfile): run it here, without arguments.

Columns x, rows y as they lie in the file (row 0 is the file's first), sections z:
    modeN.mrc: 7 columns, 5 rows, 3 sections of (x + 10 * y + 40 * z) * factor + offset
    mode12.mrc is big-endian and has an extended header
"""
import mrcfile
import numpy as np

z, y, x = np.meshgrid(np.arange(3), np.arange(5), np.arange(7), indexing="ij")
index = x + 10 * y + 40 * z  # 0 to 126

for mode, dtype, factor, offset in (
    (0, np.int8, 2, -128),
    (1, np.int16, 500, -32768),
    (2, np.float32, 0.25, -3.5),
    (6, np.uint16, 520, 0),
    (12, ">f2", 0.5, -8),
):
    with mrcfile.new(f"mode{mode}.mrc", overwrite=True) as mrc:
        mrc.set_data((index * factor + offset).astype(dtype))
        if mode == 12:
            mrc.set_extended_header(np.full(50, 85, np.uint8))
        mrc.voxel_size = 1.0
        assert mrc.header.mode == mode
