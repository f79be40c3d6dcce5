#!/usr/bin/python3
"""The rows of the file search: look-ups, expansion, databases, and the start beside a big tree."""

import glob
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time

from measure import DRIVER, PROGRAMS, REPEAT, SETPATHS, SHELL, command_time, interleaved, make_home, over, row, run

DATABASES = ("TEXINPUTS", "DVIPSHEADERS", "TYPE1FONTS", "TEXFONTS", "VFFONTS")
FIRST_PAINT = os.path.join(PROGRAMS, "first_paint")
NAMES = 40000


def names_of(support, count=1000):
    """Names of every kind that has a database, each with its kind."""
    names = set()
    for kind, database in ((9, "TEXINPUTS"), (23, "DVIPSHEADERS"), (24, "TYPE1FONTS"), (5, "TEXFONTS"), (6, "VFFONTS")):
        with open(os.path.join(support, database), encoding="utf-8") as file:
            lines = [line.rstrip("\n") for line in file if line[0] != "/"]
        names.update((kind, name) for name in lines if name.isascii() and "." in name.strip(".") and " " not in name)
    return random.Random(1).sample(sorted(names), min(count, len(names)))


def lookups(folder):
    """In a shell that has started, over the installed distribution: the time to the last name found, in which the
    databases are read for the first time. The reference gets the same names in one call."""
    home, environment = make_home(folder)
    run([SETPATHS, "--defaults"], env=environment)
    names = names_of(home + "/data/Quillon")
    text = "".join(f"{kind} {name}\n" for kind, name in names).encode()
    call = ["kpsewhich", *(name for _, name in names)]
    counts = []

    def own():
        words = run([DRIVER, "lookups"], input=text, env=environment, cwd=home + "/work").split()
        counts.append(int(words[0]))
        return int(words[2]) / 1e6

    def reference():
        start = time.perf_counter()
        subprocess.run(call, stdout=subprocess.DEVNULL, cwd=home + "/work", check=False)
        return (time.perf_counter() - start) * 1000

    measured, against = interleaved(own, reference)
    row(f"{len(names)} look-ups with databases", f"{len(names) / measured * 1000:.0f}/s",
        f"kpsewhich {len(names) / against * 1000:.0f}/s", f"{against / measured:.1f}", ">= 10",
        counts[-1] == len(names) and against / measured >= 10)


def database_writing(folder):
    """All five databases, written from the distribution's trees as a person would."""
    home, environment = make_home(folder)
    run([SETPATHS, "--defaults"], env=environment)
    with open(home + "/config/Quillon Preferences", encoding="utf-8") as file:
        values = dict(line.rstrip("\n").split("=", 1) for line in file if "=" in line)
    trees = [tree for tree in values["TEXMFTREES"].split(":") if os.path.isdir(tree)]
    measured, against = interleaved(lambda: command_time([SETPATHS, "--databases"], env=environment),
                                    lambda: command_time(["find", *trees]))
    row("writing the five databases", f"{measured:.1f} ms", f"find {against:.1f} ms", f"{measured / against:.2f}",
        "<= 3", measured <= 3 * against)


def expansion(trees, title):
    _, environment = make_home(os.path.dirname(trees[0]) if trees[0].startswith("/tmp") else tempfile.gettempdir())
    drivers = [subprocess.Popen([DRIVER, "expand", str(REPEAT + 1), tree], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                env=environment) for tree in trees]
    first = [True]

    def own():
        total = 0
        for driver in drivers:
            if not first[0]:
                driver.stdin.write(b"\n")
                driver.stdin.flush()
            total += int(driver.stdout.readline().split()[1])
        first[0] = False
        return total / 1e6

    measured, against = interleaved(own, lambda: command_time(["find", *trees, "-type", "d"]))
    for driver in drivers:
        driver.stdin.close()
        driver.wait()
    folders = len(run(["find", *trees, "-type", "d"]).splitlines())
    row(f"expanding {title}, {folders} folders", f"{measured:.1f} ms", f"find {against:.1f} ms",
        f"{measured / against:.2f}", "<= 1.2", measured <= 1.2 * against)


def make_tree(root):
    """13,020 folders with three files each, and five databases of 40,000 names over them."""
    folders = []
    for a in range(20):
        for b in range(25):
            for c in range(25):
                folder = f"{root}/tree/kind{a:02}/supplier{b:02}/family{c:02}"
                os.makedirs(folder)
                for name in ("a.tfm", "b.tfm", "c.tfm"):
                    os.close(os.open(f"{folder}/{name}", os.O_CREAT | os.O_WRONLY))
                folders.append(folder)
    return folders


def make_databases(support, folders):
    os.makedirs(support)
    for name in DATABASES:
        with open(f"{support}/{name}", "w", encoding="utf-8") as file:
            written = 0
            for folder in folders:
                file.write(folder + "/\n")
                for _ in range(min(4, NAMES - written)):
                    file.write(f"font{written}.tfm\n")
                    written += 1


def database_reading(support, environment):
    paths = [os.path.join(support, name) for name in DATABASES]
    sizes = []

    def own():
        words = run([DRIVER, "databases"], env=environment).split()
        sizes.append((int(words[0]), int(words[2])))
        return int(words[1]) / 1e6

    measured, against = interleaved(own, lambda: command_time(["wc", "-l", *paths]))
    count, size = sizes[-1]
    row(f"reading five databases, {count} names", f"{measured:.1f} ms", f"wc -l {against:.1f} ms",
        f"{measured / against:.2f}", "<= 5", count == 5 * NAMES and measured <= 5 * against)
    text = sum(os.path.getsize(path) for path in paths)
    row("memory of the five databases", f"{size / 1e6:.1f} MB", f"files {text / 1e6:.1f} MB", f"{size / text:.2f}",
        "<= 3", size <= 3 * text)


def start(folder, support_of_tree):
    plain_home, plain = make_home(folder + "/plain", "SPACECHAR=31\nDEBUG=0\n")
    path = "".join(f"{key}=.:{folder}/tree//\n" for key in
                   ("TEXINPUTS", "TEXCONFIG", "DVIPSHEADERS", "ENCFOLDER", "TEXFONTS", "TYPE1FONTS", "VFFONTS"))
    tree_home, tree = make_home(folder + "/full", "SPACECHAR=31\nDEBUG=0\nDATABASE=1\n" + path)
    shutil.copytree(support_of_tree, tree_home + "/data/Quillon")
    command = [SHELL, "--headless", "--script", "/dev/null"]

    def headless(environment, home):
        return lambda: command_time(command, env={name: value for name, value in environment.items()
                                                  if name not in ("DISPLAY", "WAYLAND_DISPLAY")},
                                    cwd=home + "/work", stderr=subprocess.DEVNULL)

    measured, against = interleaved(headless(tree, tree_home), headless(plain, plain_home))
    row("headless start beside a tree of 13,000 folders and the databases", f"{measured:.1f} ms",
        f"with none {against:.1f} ms", f"{measured / against:.2f}", "<= 1.2", measured <= 1.2 * against)
    if not os.environ.get("DISPLAY") or not os.path.exists(FIRST_PAINT):
        return

    def window(environment, home):
        return lambda: float(run([FIRST_PAINT, SHELL], env=environment, cwd=home + "/work",
                                 stderr=subprocess.DEVNULL).split()[0])

    measured, against = interleaved(window(tree, tree_home), window(plain, plain_home))
    row("start to a painted window beside the same", f"{measured:.1f} ms", f"with none {against:.1f} ms",
        f"{measured / against:.2f}", "<= 1.2", measured <= 1.2 * against)


def main():
    folder = tempfile.mkdtemp(prefix="quillon-bench-")
    try:
        lookups(folder + "/lookups")
        database_writing(folder + "/writing")
        expansion([tree for tree in glob.glob("/usr/share/texlive/texmf-dist")], "the TeX tree")
        folders = make_tree(folder)
        expansion([folder + "/tree"], "a large tree")
        home, environment = make_home(folder + "/databases", "SPACECHAR=31\n")
        make_databases(home + "/data/Quillon", folders)
        database_reading(home + "/data/Quillon", environment)
        start(folder, home + "/data/Quillon")
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    return 1 if over else 0


if __name__ == "__main__":
    sys.exit(main())
