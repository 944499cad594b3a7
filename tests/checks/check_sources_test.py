#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Each check of scripts/check-sources finds the fault it is there for, and nothing in clean code."""
import pathlib
import tempfile
import unittest

import loaded

checks = loaded.script("check-sources")

SPDX = "// SPDX-License-Identifier: GPL-3.0-or-later\n"


class CheckSourcesTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.root = pathlib.Path(self.folder.name)

    def tearDown(self):
        self.folder.cleanup()

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def test_long_files_and_functions(self):
        self.write("a/short.cpp", "namespace x {\n\nint f() {\n" + "    g();\n" * 57 + "}\n\n} // namespace x\n")
        self.write("a/table.cpp", "const int kTable[] = {\n" + "    1,\n" * 300 + "};\n\nvoid g();\n")
        self.assertEqual(checks.check_sizes(self.root), [])
        self.write("a/long.cpp", "template <class T>\nint f(T a,\n      T b) {\n" + "    g();\n" * 57 + "}\n")
        self.write("a/method.cpp", "Result<QMap<int, int>> A::f() const {\n" + "    g();\n" * 70 + "}\n")
        self.write("a/file.cpp", "\n" * 801)
        self.write("a/header.h", "\n" * 201)
        self.write("build-dev/skipped.cpp", "\n" * 900)
        self.assertEqual([fault.split(": ")[0] for fault in checks.check_sizes(self.root)],
                         ["a/file.cpp", "a/header.h", "a/long.cpp:1", "a/method.cpp:1"])

    def test_results_are_nodiscard(self):
        self.write("good.h", "[[nodiscard]] Result<std::vector<int>>\nf(int a);\nstruct A {\n"
                             "    [[nodiscard]] static Result<A> make();\n    friend Result<A> g();\n"
                             "    Result<int> m_last;\n    std::function<Result<int>(int)> m_f;\n};\n"
                             "void take(const Result<int>& r);\nusing R = Result<int>;\n// Result<int> old();\n")
        self.assertEqual(checks.check_nodiscard(self.root), [])
        self.write("bad.h", "struct A {\npublic:\n    static Result<std::map<int, int>> make();\n"
                            "    virtual Result<void>\n    run(int a) = 0;\n};\nplatform::Result<int> f();\n")
        self.assertEqual([fault.split(": ")[0] for fault in checks.check_nodiscard(self.root)],
                         ["bad.h:3", "bad.h:4", "bad.h:7"])

    def test_each_message_has_words_in_both_tables(self):
        rows = '{"disk-full", %s},\n{"no-decoder",\n %s}, {},\n'
        app = 'QT_TRANSLATE_NOOP("Words", %s)'
        self.write("a/messages.h", 'constexpr MessageCode kFull{"disk-full"};\nconstexpr MessageCode kNo{"no-decoder"};\n')
        self.write("app/words/words.cpp", rows % (app % '"Full"', app % '"No %1 \\"x\\""\n" of %2"'))
        self.write("cli/words.cpp", rows % ('"Full"', '"No %1 of %2"'))
        self.assertEqual(checks.check_messages(self.root), [])
        self.write("b/messages.h", 'constexpr MessageCode kFull{"disk-full"};\nconstexpr MessageCode kA{"A_b"};\n')
        self.write("app/words/words.cpp", rows % (app % '"Full %1"', app % '"No %2"') + '{"gone", "Gone"},')
        self.write("cli/words.cpp", rows % ('"Full"', '"No %1"') + '{"disk-full", "Full"}')
        self.assertEqual(sorted(checks.check_messages(self.root)), sorted([
            "b/messages.h: disk-full is declared in a/messages.h too",
            'b/messages.h: "A_b" is not words joined by hyphens',
            "app/words/words.cpp: the gaps of no-decoder are not numbered from %1 on",
            "b/messages.h: app/words/words.cpp has no words for A_b", "b/messages.h: cli/words.cpp has no words for A_b",
            "app/words/words.cpp: no MessageCode gone", "cli/words.cpp: two rows for disk-full",
            "disk-full: its gaps differ in the two tables", "no-decoder: its gaps differ in the two tables"]))

    def test_words_headers_and_format(self):
        self.write("clean.h", SPDX + "#pragma once\n\n// A special, specific thing in /work and Part 1.\n")
        self.assertEqual(checks.check_words(self.root) + checks.check_headers(self.root), [])
        self.write("words.md", "see the spe" + "c\nPart " + "2.1 says\nTO" + "DO later\nin /wor" + "k/main\n")
        self.write("bare.h", "#pragma once\n")
        self.write("open.h", SPDX + "\nint a;\n")
        self.assertEqual(len(checks.check_words(self.root)), 4)
        self.assertEqual([fault.split(":")[0] for fault in checks.check_headers(self.root)],
                         ["bare.h", "bare.h", "open.h"])
        if checks.shutil.which("clang-format-14"):
            self.assertEqual(checks.check_format(self.root), [])
            self.write("bent.cpp", "int   f( ){return 1;}\n")
            self.assertTrue(checks.check_format(self.root))


if __name__ == "__main__":
    unittest.main()
