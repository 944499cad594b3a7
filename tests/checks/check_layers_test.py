#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""scripts/check-layers finds an include against an arrow and a library outside its folder, and nothing else."""
import pathlib
import tempfile
import unittest

import loaded

layers = loaded.script("check-layers")
MODULES = {"QString": "QtCore", "QImage": "QtGui", "QWidget": "QtWidgets", "QDBusMessage": "QtDBus"}


class CheckLayersTest(unittest.TestCase):
    def faults(self, *includes):
        """The includes, "file header" each, that the check refuses."""
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for line in includes:
                name, header = line.split(" ")
                path = root / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(f"// comment\n#include {header}\n", encoding="utf-8")
            return {fault.split(":")[0] for fault in layers.faults_of(root, MODULES)}

    def test_what_is_allowed_passes(self):
        self.assertEqual(self.faults(
            'media/a.cpp "platform/foundation/dates.h"', 'app/list/a.cpp "app/theme/theme.h"', "media/b.cpp <QString>",
            "media/c.cpp <vector>", "batch/d.cpp <unistd.h>", "platform/engine/io/e.h <libavformat/avformat.h>",
            "platform/image/f.cpp <exiv2/exiv2.hpp>", "platform/image/g.cpp <QImage>", "app/windows/h.cpp <QWidget>",
            "platform/formats/tagged/i.cpp <vorbisfile.h>", "platform/workspace/j.cpp <QDBusMessage>",
            "build-dev/media/k.cpp <QWidget>", "tests/media/l.cpp <QWidget>"), set())

    def test_each_way_against_the_arrows_is_found(self):
        wrong = ['media/a.cpp "metadata/plans.h"', 'platform/foundation/b.h "platform/media/asset/av_url_asset.h"',
                 'app/widgets/c.cpp "app/list/media_table.h"', 'cli/d.cpp "app/AppDelegate.h"', 'media/e.cpp "nowhere/f.h"',
                 'platform/media/asset/g.cpp "platform/media/export/h.h"', 'platform/media/model/i.h "platform/media/asset/j.h"']
        self.assertEqual(self.faults(*wrong), {line.split(" ")[0] for line in wrong})

    def test_each_library_outside_its_folder_is_found(self):
        wrong = ["platform/media/a.cpp <libavutil/display.h>", "platform/formats/b.cpp <exiv2/exiv2.hpp>",
                 "platform/formats/flac/c.cpp <vorbisfile.h>", "platform/formats/d.cpp <id3/tag.h>",
                 "platform/image/e.cpp <QWidget>", "media/f.cpp <QImage>", "app/g.cpp <QDBusMessage>",
                 "app/panes/h.cpp <mpv/client.h>", "cli/i.cpp <gif_lib.h>", "jobs/j.cpp <plist/plist.h>",
                 "media/k.cpp <QtWidgets/QWidget>", "batch/l.cpp <CLI/CLI.hpp>"]
        self.assertEqual(self.faults(*wrong), {line.split(" ")[0] for line in wrong})


if __name__ == "__main__":
    unittest.main()
