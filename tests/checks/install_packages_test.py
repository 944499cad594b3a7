#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""scripts/install-packages with stand-ins for dpkg-query, apt-get, sudo and id."""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = sys.argv.pop()


class InstallPackagesTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        root = pathlib.Path(self.folder.name)
        self.log = root / "calls"
        self.log.touch()
        (root / "scripts").mkdir()
        (root / "packages").mkdir()
        self.script = root / "scripts" / "install-packages"
        self.script.write_bytes(pathlib.Path(SCRIPT).read_bytes())
        self.script.chmod(0o755)
        (root / "packages" / "debian.txt").write_text("# x\n[build]\none\n# why\ntwo\n\n[test]\nthree\n")
        self.bin = root / "bin"
        self.bin.mkdir()
        self.tool("apt-get", 'echo "apt-get $*" >>"$CALLS"; case "$*" in *-s*) exit ${KNOWN:-0};; esac')
        self.tool("id", "echo ${USER_ID:-0}")
        self.has("one two")

    def tearDown(self):
        self.folder.cleanup()

    def tool(self, name, body):
        path = self.bin / name
        path.write_text("#!/bin/bash\n" + body + "\n")
        path.chmod(0o755)

    def has(self, installed):
        self.tool("dpkg-query", f"for p in {installed}; do echo \"ii  $p\"; done; echo 'no packages' >&2; exit 1")

    def run_script(self, *sections, tools=("bash", "dirname", "sed", "awk", "grep", "sort", "mktemp", "tail", "rm",
                                           "env", "tr"), **environment):
        for name in tools:
            link = self.bin / name
            if not link.exists():
                link.symlink_to(f"/usr/bin/{name}")
        done = subprocess.run(["/usr/bin/bash", self.script, *sections], capture_output=True, text=True,
                              env={"PATH": str(self.bin), "CALLS": str(self.log), "TMPDIR": self.folder.name,
                                   **environment})
        return done, self.log.read_text().splitlines()

    def test_silent_when_nothing_is_missing(self):
        done, calls = self.run_script("build")
        self.assertEqual((done.returncode, done.stdout, done.stderr, calls), (0, "", "", []))

    def test_installs_only_what_is_missing_without_fetching_lists(self):
        self.has("one")
        done, calls = self.run_script("build", "test")
        self.assertEqual(done.returncode, 0)
        self.assertIn("three two", done.stdout)
        self.assertEqual(len(calls), 2)
        self.assertTrue(calls[1].endswith("install -y --no-install-recommends three two"), calls)

    def test_fetches_lists_when_a_package_is_unknown(self):
        done, calls = self.run_script("test", KNOWN="100")
        self.assertEqual(done.returncode, 0)
        self.assertEqual([c.split()[-1] for c in calls], ["three", "update", "three"])

    def test_a_user_without_sudo_is_told_what_to_do(self):
        done, calls = self.run_script("test", USER_ID="1000")
        self.assertEqual((done.returncode, calls), (1, []))
        self.assertIn("apt-get install --no-install-recommends three", done.stderr)
        self.tool("sudo", 'echo "sudo $*" >>"$CALLS"')
        done, calls = self.run_script("test", USER_ID="1000")
        self.assertEqual(done.returncode, 0)
        self.assertTrue(calls[-1].startswith("sudo env DEBIAN_FRONTEND"), calls)

    def test_failures_are_failures(self):
        self.tool("apt-get", 'case "$*" in *-s*) exit 0;; *) echo "disk full"; exit 100;; esac')
        done, _ = self.run_script("test")
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("disk full", done.stderr)
        self.assertEqual(self.run_script("nonsense")[0].returncode, 2)


if __name__ == "__main__":
    unittest.main()
