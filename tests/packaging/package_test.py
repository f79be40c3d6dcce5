"""The Debian package: what the distribution's own judges say, what is in it, and that "cmake --install" installs the
same."""

import os
import re
import subprocess
import tarfile
import tempfile
import unittest

from installed import BUILD, ROOT, package


def output_of(*command, **more):
    done = subprocess.run(command, capture_output=True, text=True, check=False, timeout=120, **more)
    return done.returncode, done.stdout + done.stderr


class Package(unittest.TestCase):
    def members(self):
        content = subprocess.Popen(["dpkg-deb", "--fsys-tarfile", package()], stdout=subprocess.PIPE)
        with content, tarfile.open(fileobj=content.stdout, mode="r|") as archive:
            return {member.name.removeprefix("./"): member for member in archive}

    def test_lintian_is_quiet(self):
        root = ["--allow-root"] if os.geteuid() == 0 else []
        # Machine code now and then reads as a word with a mistake.
        words = ["--suppress-tags", "spelling-error-in-binary"]
        self.assertEqual(output_of("lintian", "--display-info", "--pedantic", "--fail-on", "pedantic,info,warning,error",
                                   *words, *root, package()), (0, ""))

    def test_the_desktops_judges_are_quiet(self):
        resources = os.path.join(ROOT, "resources")
        for name in ("Shell", "SetUp"):
            self.assertEqual(output_of("desktop-file-validate", f"{resources}/org.quillon.{name}.desktop"), (0, ""))
        status, said = output_of("appstreamcli", "validate", "--no-net", "--no-color",
                                 f"{resources}/org.quillon.Shell.metainfo.xml")
        self.assertEqual(status, 0, said)
        self.assertNotRegex(said, "(?m)^[EWI]: ")

    def test_everything_is_roots_and_nobody_else_may_write(self):
        for name, member in self.members().items():
            self.assertEqual((member.uid, member.gid), (0, 0), name)
            executable = member.isdir() or "/bin/" in name or re.search(r"/(Linux|Helpers)/[a-z-]+$", name)
            if not member.issym():
                self.assertEqual(member.mode, 0o755 if executable else 0o644, name)

    def test_links_stay_inside(self):
        members = self.members()
        links = {name: member.linkname for name, member in members.items() if member.issym()}
        self.assertGreater(len(links), 8)
        for name, target in links.items():
            self.assertFalse(target.startswith("/"), name)
            self.assertIn(os.path.normpath(os.path.join(os.path.dirname(name), target)), members, name)

    def test_the_sums_are_those_of_the_files(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["dpkg-deb", "-R", package(), folder], check=True)
            sums = os.path.join(folder, "DEBIAN", "md5sums")
            self.assertEqual(output_of("md5sum", "--check", "--quiet", sums, cwd=folder), (0, ""))
            with open(sums, encoding="utf-8") as file:
                named = {line.split(None, 1)[1].rstrip() for line in file}
        self.assertEqual(named, {name for name, member in self.members().items() if member.isreg()})

    def test_programs_hold_no_symbols_and_no_folder_of_the_build(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["dpkg-deb", "-x", package(), folder], check=True)
            looked_at = 0
            for name, member in self.members().items():
                path = os.path.join(folder, name)
                if not member.isreg():
                    continue
                with open(path, "rb") as file:
                    content = file.read()
                self.assertNotIn(os.fsencode(BUILD), content, name)
                if content.startswith(b"\x7fELF"):
                    looked_at += 1
                    self.assertIn("no symbols", output_of("nm", path)[1], name)
        self.assertEqual(looked_at, 12)

    def test_what_it_needs(self):
        field = lambda name: output_of("dpkg-deb", "-f", package(), name)[1].strip()  # noqa: E731
        depends = field("Depends")
        for needed in ("texlive-binaries | texlive-local", "dbus-daemon", "qt6-qpa-plugins", "libqt6widgets6 (>=",
                       "libsystemd0 (>=", "libwayland-client0 (>="):
            self.assertIn(needed, depends)
        # The package goes with any Qt that has what it calls, not with one version alone.
        self.assertNotIn("private", depends)
        self.assertEqual(field("Section"), "tex")
        self.assertEqual(field("Maintainer"), "The Quillon authors <quillon@example.org>")

    def test_an_install_has_the_same_files(self):
        with tempfile.TemporaryDirectory() as folder:
            status, said = output_of("cmake", "--install", BUILD, "--prefix", "/usr", env=dict(os.environ, DESTDIR=folder))
            self.assertEqual(status, 0, said)
            found = {os.path.relpath(os.path.join(place, name), folder)
                     for place, folders, files in os.walk(folder) for name in folders + files}
        self.assertEqual(found, {name for name in self.members() if name})


if __name__ == "__main__":
    unittest.main()
