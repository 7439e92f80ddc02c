"""One row of the table of crystals: what was found, against the truth."""
import json
import sys


def main():
    name, summary_file, compare_file = sys.argv[1:4]
    with open(summary_file, encoding="utf-8") as file:
        summary = json.load(file)
    with open(compare_file, encoding="utf-8") as file:
        compare = json.load(file)

    def largest(key):
        return max((abs(value) for value in compare.get(key, [])), default=float("nan"))

    if name == "silicon":  # the first of the list
        print("                     found cell       refined cell     indexed  right    peaks found at SNR of")
        print("crystal     lattice  lengths  angles  lengths  angles  of all   indices  >= 5   >= 10  >= 20")
    print(f"{name:11s} {'right' if compare['latticeRight'] else compare['relation']:8s}"
          f"{largest('lengthErrorPercent'):6.2f} %{largest('angleErrorDegrees'):7.2f}°"
          f"{largest('refinedLengthErrorPercent'):7.3f} %{largest('refinedAngleErrorDegrees'):7.3f}°"
          f"{100 * summary.get('indexedShare', 0):7.1f} %{100 * compare['rightShare']:8.1f} %"
          + "".join(f"{100 * row['share']:5.1f} %" for row in compare["found"]), flush=True)


main()
