#!/usr/bin/python3
"""The checks of the house: what may include what, what is never called, how the code is laid out.

    checks.py layering|banned|globals|headers|format|sizes     one of them; prints what is wrong, exit status 1
"""

import glob
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SOURCES = os.path.join(ROOT, "src")
SHELL = ("core", "settings", "jobs", "tools", "events", "viewers", "files", "kpath", "menus", "console", "dialogs")
FLOOR = ("state", "toolbox", "front")
# Of what every program shares the shell reads these tables, which name no library.
TABLES = ("common/search_settings.h", "common/setting_numbers.h", "common/index_settings.h")
# What a folder may include of the others (folders, or single headers), besides itself and the standard library. A
# folder within a folder is one of its own where it is named here.
ALLOWED = {
    "toolbox": (),
    "front": ("toolbox",),
    "state": ("toolbox", "front"),
    **{folder: (*SHELL, *FLOOR, *TABLES) for folder in SHELL},
    "common": ("toolbox",),
    "linux/files": ("toolbox", "common"),
    "linux/events": ("toolbox", "front", "common", "linux/files"),
    "headless": (*SHELL, *FLOOR, "common/host_files.h", "linux/events"),
    "program": (*SHELL, *FLOOR, "common", "linux/events", "headless"),
    "widgets": ("common/offered_applications.h",),
    "desktop": (*SHELL, *FLOOR, "widgets", "linux/events", "common/utf8.h", "common/places.h",
                "common/offered_applications.h", "desktop/wayland"),
    "desktop/wayland": (),
    "toolhost": ("toolbox/types.h", "common", "toolhost/window"),
    "toolhost/window": ("toolhost", "common", "widgets"),
    "setpaths": ("toolbox/resources.h", "common", "setpaths/window"),
    "setpaths/window": ("setpaths", "common", "widgets", "toolbox/types.h"),
    "client": ("common",),
    "helpers": ("common",),
    "dviview": ("common", "helpers", "toolbox/types.h"),
    "background": ("common", "toolhost"),
}
LIBRARIES = re.compile(r'#\s*include\s*<(Q\w|systemd/|gio/|glib|zlib)')
LIBRARY_FOLDERS = ("common", "linux", "desktop", "widgets", "toolhost", "setpaths", "client", "helpers", "background", "dviview")
BANNED = re.compile(r"\b(strcpy|strcat|sprintf|vsprintf|gets|system|usleep)\s*\(")
OPERATING_SYSTEM = re.compile(r"#\s*(if|ifdef|elif).*(__linux__|__unix__|_WIN32|__APPLE__|__FreeBSD__)")


def sources(*patterns):
    return sorted(path for pattern in patterns for path in glob.glob(os.path.join(ROOT, pattern), recursive=True))


def folder_of(name):
    """The folder that the rules know for a file named from src/; empty when they know none."""
    parts = name.split("/")[:-1]
    inner, outer = "/".join(parts[:2]), "/".join(parts[:1])
    return inner if inner in ALLOWED else outer if outer in ALLOWED and len(parts) == 1 else ""


def lines(path):
    with open(path, encoding="utf-8") as file:
        return list(enumerate(file, 1))


def breaches(name, text):
    """What of the file NAME (from src/), whose contents are TEXT, the rules forbid: pairs of line number and reason."""
    own = folder_of(name)
    top = name.split("/")[0]
    if not own:
        yield 1, f"the rules know no folder {os.path.dirname(name)}"
        return
    for number, line in enumerate(text.split("\n"), 1):
        include = re.match(r'#\s*include\s*"([^"]+)"', line)
        if include and not include.group(1).startswith("ui_"):
            included = include.group(1)
            folder = folder_of(included)
            if "/" not in included or not folder:
                yield number, f"includes are written from src/: {included}"
            elif folder != own and folder not in ALLOWED[own] and included not in ALLOWED[own]:
                yield number, f"{own} does not include {included}"
        if LIBRARIES.match(line) and top not in LIBRARY_FOLDERS:
            yield number, f"a library's header: {line.strip()}"
        if own in (*SHELL, "state") and OPERATING_SYSTEM.match(line):
            yield number, "the shell does not ask for the operating system"


def layering():
    found = []
    for path in sources("src/**/*.cpp", "src/**/*.h"):
        found += [f"{os.path.relpath(path, ROOT)}:{number}: {reason}"
                  for number, reason in breaches(os.path.relpath(path, SOURCES), open_text(path))]
    used = {folder_of(os.path.relpath(path, SOURCES)) for path in sources("src/**/*.cpp", "src/**/*.h")}
    return found + [f"the rules name a folder that is not there: {folder}" for folder in ALLOWED if folder not in used]


def without_comments(line):
    return re.sub(r'"(\\.|[^"\\])*"', '""', line.split("//")[0])


def banned():
    return [f"{os.path.relpath(path, ROOT)}:{number}: {line.strip()}"
            for path in sources("src/**/*.cpp", "src/**/*.h") for number, line in lines(path)
            if BANNED.search(without_comments(line))]


def globals_():
    return [f"{os.path.relpath(path, ROOT)}:{number}: extern in a source file"
            for path in sources("src/**/*.cpp") for number, line in lines(path)
            if re.match(r"\s*extern\b(?! \"C\")", line)]


def compiles_alone(header):
    name = os.path.relpath(header, os.path.join(ROOT, "src"))
    done = subprocess.run(["g++", "-std=c++20", "-D_GNU_SOURCE", "-Wall", "-Wextra", "-Wconversion", "-Werror",
                           "-I" + os.path.join(ROOT, "src"), "-x", "c++", "-fsyntax-only", "-"],
                          input=f'#include "{name}"\n', capture_output=True, text=True, check=False)
    return "" if done.returncode == 0 else f"{name} does not stand alone:\n{done.stderr}"


def headers():
    # The desktop front's own headers need the toolkit's; its own build compiles them.
    wanted = [path for path in sources("src/**/*.h") if not re.search(r"#\s*include\s*<Q", open_text(path))
              and not re.search(r"/(desktop|widgets|window)/", path)]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        return [text for text in pool.map(compiles_alone, wanted) if text]


def open_text(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def format_():
    files = sources("src/**/*.cpp", "src/**/*.h", "tests/**/*.cpp", "tests/**/*.h", "benchmarks/**/*.cpp")
    done = subprocess.run(["clang-format", "--dry-run", "-Werror", *files], capture_output=True, text=True,
                          check=False, cwd=ROOT)
    return [line for line in done.stderr.split("\n") if "error:" in line] + marks_of_merges()


def marks_of_merges():
    """Lines that git writes between two sides of a conflict, in files that no compiler reads."""
    return [f"{os.path.relpath(path, ROOT)}:{number}: {line.strip()}"
            for path in sources("*.md", "scripts/*", "resources/**/*.*", "tests/**/*.py", "benchmarks/*.py")
            if os.path.isfile(path) and "/__pycache__/" not in path and not path.endswith(".png")
            for number, line in lines(path) if re.match(r"(<{7}|>{7})( |$)", line)]


def sizes():
    found = []
    for path in sources("src/**/*.cpp", "src/**/*.h"):
        count = len(lines(path))
        if count > 600:
            found.append(f"{os.path.relpath(path, ROOT)} has {count} lines")
    return found


CHECKS = {"layering": layering, "banned": banned, "globals": globals_, "headers": headers, "format": format_,
          "sizes": sizes}


def main():
    if len(sys.argv) != 2 or sys.argv[1] not in CHECKS:
        print(__doc__)
        return 2
    found = CHECKS[sys.argv[1]]()
    print("\n".join(found) if found else f"{sys.argv[1]}: nothing wrong")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
