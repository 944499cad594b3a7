# SPDX-License-Identifier: GPL-3.0-or-later
"""The checks in scripts/ as modules."""
import importlib.machinery
import importlib.util
import pathlib
import sys

SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "scripts"


def script(name):
    loader = importlib.machinery.SourceFileLoader(name.replace("-", "_"), str(SCRIPTS / name))
    sys.dont_write_bytecode = True
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module
