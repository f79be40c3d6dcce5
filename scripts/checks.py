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
SHELL = ("core", "settings", "jobs", "tools", "events", "viewers", "files", "kpath", "menus", "console", "dialogs")
# What a folder may include of the others, besides itself and the standard library.
ALLOWED = {
    **{folder: (*SHELL, "toolbox", "front") for folder in SHELL},
    "toolbox": (),
    "front": ("toolbox",),
    "linux": ("toolbox", "front"),
    "headless": (*SHELL, "toolbox", "front", "linux"),
    "desktop": (*SHELL, "toolbox", "front", "linux"),
    "program": (*SHELL, "toolbox", "front", "linux", "headless"),
    "toolhost": ("toolbox", "window", "desktop"),
    "setpaths": ("toolbox", "toolhost", "desktop"),
    "client": ("toolbox",),
    "helpers": ("toolbox", "linux"),
}
LIBRARIES = re.compile(r'#\s*include\s*<(Q\w|systemd/|gio/|glib|zlib)')
LIBRARY_FOLDERS = ("linux", "desktop", "toolhost", "setpaths", "client", "helpers")
BANNED = re.compile(r"\b(strcpy|strcat|sprintf|vsprintf|gets|system|usleep)\s*\(")
OPERATING_SYSTEM = re.compile(r"#\s*(if|ifdef|elif).*(__linux__|__unix__|_WIN32|__APPLE__|__FreeBSD__)")


def sources(*patterns):
    return sorted(path for pattern in patterns for path in glob.glob(os.path.join(ROOT, pattern), recursive=True))


def folder_of(path):
    return os.path.relpath(path, os.path.join(ROOT, "src")).split(os.sep)[0]


def lines(path):
    with open(path, encoding="utf-8") as file:
        return list(enumerate(file, 1))


def layering():
    found = []
    for path in sources("src/**/*.cpp", "src/**/*.h"):
        own = folder_of(path)
        for number, line in lines(path):
            place = f"{os.path.relpath(path, ROOT)}:{number}: "
            include = re.match(r'#\s*include\s*"(\w+)/', line)
            if include and include.group(1) != own and include.group(1) not in ALLOWED.get(own, ()):
                found.append(f"{place}{own} does not include {include.group(1)}")
            if LIBRARIES.match(line) and own not in LIBRARY_FOLDERS:
                found.append(f"{place}a library's header: {line.strip()}")
            if own in SHELL and OPERATING_SYSTEM.match(line):
                found.append(f"{place}the shell does not ask for the operating system")
    return found


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
              and folder_of(path) != "desktop" and "/window/" not in path]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        return [text for text in pool.map(compiles_alone, wanted) if text]


def open_text(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def format_():
    files = sources("src/**/*.cpp", "src/**/*.h", "tests/**/*.cpp", "tests/**/*.h", "benchmarks/**/*.cpp")
    done = subprocess.run(["clang-format", "--dry-run", "-Werror", *files], capture_output=True, text=True,
                          check=False, cwd=ROOT)
    return [line for line in done.stderr.split("\n") if "error:" in line]


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


sys.exit(main())
