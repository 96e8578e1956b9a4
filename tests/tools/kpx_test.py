#!/usr/bin/env python3
"""Runs kpx as its users do and checks output, exit codes and the files it leaves:

    kpx_test.py PROGRAM [TEST...]
"""

import sys
import unittest

from config_test import *  # noqa: F403
from services_test import *  # noqa: F403

if __name__ == "__main__":
    del sys.argv[1]  # the program, which tool.py took
    unittest.main()
