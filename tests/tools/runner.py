"""Starts kpx for the tests, through the program that KPX_RUNNER names where kpx was built for
another system."""

import contextlib
import os
import signal
import subprocess

RUNNER = os.environ.get("KPX_RUNNER", "").split()


def run(command, input=None, timeout=120, **options):
    """As subprocess.run, with captured output. On a busy machine wine now and then fails to start a
    program and ends with 1 and without a word, as kpx never does: then once more."""
    for _ in range(2):
        done = run_once([*RUNNER, *command], input, timeout, options)
        if not RUNNER or done.returncode != 1 or done.stdout or done.stderr:
            break
    return done


def run_once(command, input, timeout, options):
    """After the timeout everything that the command started is killed, too: a child of a child that
    keeps the output open would make the test wait for it."""
    if input is not None:
        options["stdin"] = subprocess.PIPE
    with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          start_new_session=True, **options) as process:
        try:
            out, err = process.communicate(input, timeout)
        except BaseException:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            raise
    return subprocess.CompletedProcess(command, process.returncode, out, err)
