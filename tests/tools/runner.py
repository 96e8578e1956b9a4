"""Starts kpx for the tests, through the program that KPX_RUNNER names where kpx was built for
another system."""

import os
import subprocess

RUNNER = os.environ.get("KPX_RUNNER", "").split()


def run(command, **options):
    """As subprocess.run, with captured output. On a busy machine wine now and then fails to start a
    program and ends with 1 and without a word, as kpx never does: then once more."""
    for _ in range(2):
        done = subprocess.run([*RUNNER, *command], capture_output=True, timeout=120, **options)
        if not RUNNER or done.returncode != 1 or done.stdout or done.stderr:
            break
    return done
