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
        (root / "packages" / "debian.txt").write_text("# x\n[build]\none\n# why\ntwo | old-two\n\n[test]\nthree\n")
        (root / "os-release").write_text('PRETTY_NAME="Some System 9"\n')
        self.bin = root / "bin"
        self.bin.mkdir()
        self.apt("")
        self.tool("id", "echo ${USER_ID:-0}")
        self.has("one two")
        self.knows("one two three")

    def tearDown(self):
        self.folder.cleanup()

    def tool(self, name, body):
        path = self.bin / name
        path.write_text("#!/bin/bash\n" + body + "\n")
        path.chmod(0o755)

    def apt(self, body):
        self.tool("apt-get", 'echo "apt-get $*" >>"$CALLS"; ' + body)

    def knows(self, packages, after_update=""):
        """What apt-cache has candidates for, and what it has once the lists were fetched."""
        self.tool("apt-cache", f"""known="{packages}"; grep -q update "$CALLS" && known+=" {after_update}"
            for p in "${{@:2}}"; do case " $known " in *" $p "*) printf '%s:\\n  Candidate: 1\\n' $p;; esac; done""")

    def has(self, installed):
        self.tool("dpkg-query", f"for p in {installed}; do echo \"ii  $p\"; done; echo 'no packages' >&2; exit 1")

    def run_script(self, *sections, tools=("bash", "dirname", "sed", "awk", "grep", "sort", "mktemp", "tail", "rm",
                                           "env", "tr", "cat"), **environment):
        for name in tools:
            link = self.bin / name
            if not link.exists():
                link.symlink_to(f"/usr/bin/{name}")
        done = subprocess.run(["/usr/bin/bash", self.script, *sections], capture_output=True, text=True,
                              env={"PATH": str(self.bin), "CALLS": str(self.log), "TMPDIR": self.folder.name,
                                   "OS_RELEASE": str(pathlib.Path(self.folder.name) / "os-release"),
                                   **environment})
        return done, self.log.read_text().splitlines()

    def test_silent_when_nothing_is_missing(self):
        done, calls = self.run_script("build")
        self.assertEqual((done.returncode, done.stdout, done.stderr, calls), (0, "", "", []))

    def test_installs_only_what_is_missing_without_fetching_lists(self):
        self.has("one")
        done, calls = self.run_script("build", "test")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("on Some System 9 (build test): two three", done.stdout)
        self.assertEqual(len(calls), 1)
        self.assertTrue(calls[0].endswith("install -y --no-install-recommends two three"), calls)

    def test_takes_of_alternatives_what_the_release_has(self):
        self.has("one")
        self.knows("old-two")
        done, calls = self.run_script("build")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(calls[-1].endswith("recommends old-two"), calls)
        self.has("one old-two")
        self.assertEqual(self.run_script("build")[0].stdout, "", "the other alternative is installed")

    def test_fetches_lists_when_a_package_is_unknown(self):
        self.knows("", after_update="three")
        done, calls = self.run_script("test")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual([c.split()[-1] for c in calls], ["APT::Update::Error-Mode=any", "three"])

    def test_a_release_without_a_package_is_named(self):
        self.has("")
        self.knows("one")
        done, calls = self.run_script("build")
        self.assertEqual((done.returncode, len(calls)), (1, 1), "nothing is installed")
        self.assertRegex(done.stderr, r"^Some System 9 has no package two or old-two: use Debian .*\n$")

    def test_a_user_without_sudo_is_told_what_to_do(self):
        done, calls = self.run_script("test", USER_ID="1000")
        self.assertEqual((done.returncode, calls), (1, []))
        self.assertIn("apt-get install --no-install-recommends three", done.stderr)
        self.tool("sudo", 'echo "sudo $*" >>"$CALLS"; exit ${REFUSED:-0}')
        done, calls = self.run_script("test", USER_ID="1000", REFUSED="1")
        self.assertEqual((done.returncode, calls), (1, ["sudo -v"]))
        self.assertRegex(done.stderr, "^sudo refused: .*apt-get install --no-install-recommends three")
        done, calls = self.run_script("test", USER_ID="1000")
        self.assertEqual(done.returncode, 0)
        self.assertTrue(calls[-1].startswith("sudo env DEBIAN_FRONTEND"), calls)

    def test_failures_are_one_sentence_and_what_stands_where(self):
        for said, wanted in (("E: You don't have enough free space in /var/cache", "^The disk is full: free some space"),
                             ("dpkg: error: No space left on device", "^The disk is full: free some space"),
                             ("E: Failed to fetch x  Could not resolve 'y'", "^The packages cannot be fetched: check"),
                             ("E: Could not get lock /var/lib/dpkg", "^Another program is installing"),
                             ("E: dpkg was interrupted, you must", "^An earlier installation was interrupted: run"),
                             ("something new", "^something new\n.*mend what they name")):
            self.apt(f'echo "{said}"; exit 100')
            self.tool("dpkg-query", "printf 'ii  one\\niU  three\\n'; exit 1")
            done, _ = self.run_script("build", "test")
            self.assertEqual(done.returncode, 1, said)
            self.assertRegex(done.stderr, wanted)
            self.assertIn("Half installed: three - ", done.stderr)
        self.has("")
        done, _ = self.run_script("build", "test")
        self.assertIn("Installed of these packages: none", done.stderr)
        self.tool("apt-cache", "exit 100")
        self.apt("echo 'E: Malformed entry 1 in list file bad.list'; exit 100")
        self.assertRegex(self.run_script("test")[0].stderr, "Malformed entry 1 .*\nA list of sources in /etc/apt cannot be read")
        self.knows("")
        self.assertIn("Installed of these packages: none", self.run_script("test")[0].stderr)
        self.assertEqual(self.run_script("nonsense")[0].returncode, 2)


if __name__ == "__main__":
    unittest.main()
