// CPointGroups: the named, coloured groups of a cloud of points, and the selection.
#pragma once
