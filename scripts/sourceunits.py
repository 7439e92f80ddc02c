#!/usr/bin/python3
"""Which sources a compiler can read as one: most of its work goes into the headers, which the sources of a folder share.

sourceunits.py LIST OUT    LIST has a line "TARGET SOURCE" for each source; OUT is included by CMake, tells it the units

Two sources go together if none uses a name that the other keeps to itself: names in the unnamed namespaces of both
would be declared twice, or would hide what a header declares.
"""
import collections
import re
import sys

MOST_SOURCES = 16  # a unit: more save little and want much memory
OWN = re.compile(r"^(?:\w[\w:<>,&* ]*?[ &*](\w+)\(|(?:struct|class|enum|enum class) (\w+)|using (\w+) =|"
                 r"(?:const|constexpr|thread_local|std::|Q)[\w:<>,&* ]*?[ &*](\w+)(?:\[| =|;|\{))", re.MULTILINE)
UNNAMED = re.compile(r"^namespace \{\n(.*?)^\}  // namespace\n", re.MULTILINE | re.DOTALL)
# Types and constants anywhere, functions where they are called; members of something are looked up there.
USED = re.compile(r"(?<![\w.:>])(?:([A-Z]\w*|g_\w+)|(\w+) *\()")
NO_CODE = re.compile(r'//.*|"(?:[^"\\\n]|\\.)*"')


def names_of(source):
    """The names that a source keeps to itself, and those that it uses."""
    with open(source, encoding="utf-8") as file:
        text = file.read()
    own = set(re.findall(r"^#define (\w+)", text, re.MULTILINE))
    for body in UNNAMED.findall(text):
        own.update(name for found in OWN.findall(body) for name in found if name)
    used = {name for found in USED.findall(NO_CODE.sub("", text)) for name in found if name}
    return own, used


def units(sources):
    """Lists of sources that can be read together, in the order given."""
    made = []
    for source in sources:
        own, used = names_of(source)
        for unit in made:
            if len(unit["sources"]) < MOST_SOURCES and not unit["own"] & (own | used) and not own & unit["used"]:
                break
        else:
            unit = {"sources": [], "own": set(), "used": set()}
            made.append(unit)
        unit["sources"].append(source)
        unit["own"] |= own
        unit["used"] |= used
    return [unit["sources"] for unit in made]


def main():
    listed, out = sys.argv[1:]
    targets = collections.defaultdict(list)
    count = collections.Counter()
    with open(listed, encoding="utf-8") as file:
        for line in file.read().splitlines():
            target, source = line.split(" ", 1)
            targets[target].append(source)
            count[source] += 1
    with open(out, "w", encoding="utf-8") as file:
        for target, sources in targets.items():
            # The property belongs to the folder of the target: a source of two targets stays alone.
            own = [source for source in sources if count[source] == 1]
            for number, unit in enumerate(units(own)):
                for source in unit:
                    file.write(f'set_source_files_properties("{source}" TARGET_DIRECTORY {target} '
                               f'PROPERTIES UNITY_GROUP {number})\n')


if __name__ == "__main__":
    main()
