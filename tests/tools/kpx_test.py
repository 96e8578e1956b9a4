#!/usr/bin/env python3
"""Runs kpx as its users do and checks output, exit codes and the files it leaves:

    kpx_test.py PROGRAM [TEST...]    such as config_test or services_test.RegistryTest
"""

import sys
import unittest

if __name__ == "__main__":
    tests = sys.argv[2:]
    if not [each for each in tests if not each.startswith("-")]:
        tests += ["config_test", "services_test", "verbs_test"]
    unittest.main(module=None, argv=[sys.argv[0], *tests])
