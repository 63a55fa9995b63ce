"""Running a converter's command over the files, with the CPU time each run costs."""

import os
import re
import shlex
import signal
import subprocess
import threading
import time
from concurrent.futures import ThreadPoolExecutor

from transcription.notes import READERS

FORMATS = {"mid": ".mid", "csv": ".csv", "aubio": ".txt"}

# aubio's real-time note tracker (aubio-tools 0.4.9), set up on the dev split only:
# - 256-sample window, 128-sample hop: the tracker emits a note a fixed dozen or so hops after
#   its onset, so the hop sets the latency (~70 ms at the default 256, ~37 ms at 128); a hop
#   of 64 is faster still but splits notes and finds fewer of them.
# - -M 80: this aubionotes reads the minimum inter-onset interval in milliseconds, although its
#   help says seconds (any value below 1 acts as 1 ms and gives many split notes). 80 ms stays
#   under a sixteenth note at 120 bpm (125 ms) and suppresses re-triggers inside a note.
# - Onset method and threshold are not given: aubionotes ignores them for notes ("onset
#   threshold not supported yet"). Silence gate (-90 dB) and release drop (10 dB) stay default.
# The sample rate is the file's own (-r 0) and times are in seconds.
AUBIO_OPTIONS = "-r 0 -B 256 -H 128 -M 80 -s -90 -d 10 -T seconds"
AUBIO_TEMPLATE = "aubionotes -i {in} " + AUBIO_OPTIONS + " > {out}"
STDERR_EXCERPT = 600


class Converter:
    """A command template with {in}, {out}, {preset}, {program} and {id} placeholders, and the
    format the command writes to {out}."""

    def __init__(self, label, template, fmt="mid"):
        if not re.fullmatch(r"[A-Za-z0-9_.+-]+", label):
            raise ValueError(f"converter label '{label}': use letters, digits and _ . + -")
        if fmt not in FORMATS:
            raise ValueError(f"unknown output format '{fmt}' (use {', '.join(FORMATS)})")
        if "{in}" not in template or "{out}" not in template:
            raise ValueError(f"converter '{label}': the command needs {{in}} and {{out}}")
        self.label, self.template, self.fmt = label, template, fmt

    @classmethod
    def parse(cls, definition):
        """`LABEL=COMMAND` or `LABEL:FORMAT=COMMAND`; the format defaults to mid."""
        label, sep, template = definition.partition("=")
        if not sep or not label:
            raise ValueError(f"expected LABEL='COMMAND', got '{definition}'")
        label, _, fmt = label.partition(":")
        return cls(label, template, fmt or "mid")

    def command(self, item, out_path):
        values = {"in": shlex.quote(item["audio"]), "out": shlex.quote(out_path),
                  "preset": str(item["preset"]), "program": str(item["program"]),
                  "id": shlex.quote(item["id"])}
        cmd = self.template
        for key, value in values.items():
            cmd = cmd.replace("{" + key + "}", value)
        return cmd


def _run_measured(cmd, log_path, timeout):
    """Runs `sh -c cmd` and reaps it with wait4, whose rusage belongs to this child and every
    descendant it reaped; RUSAGE_CHILDREN deltas would mix the runs that -j overlaps."""
    with open(log_path, "wb") as log:
        start = time.monotonic()
        proc = subprocess.Popen(["/bin/sh", "-c", cmd], stdin=subprocess.DEVNULL,
                                stdout=log, stderr=log, start_new_session=True)
        timed_out = threading.Event()

        def kill():
            timed_out.set()
            try:
                os.killpg(proc.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass

        timer = threading.Timer(timeout, kill)
        timer.start()
        _, status, usage = os.wait4(proc.pid, 0)
        timer.cancel()
        proc.returncode = os.waitstatus_to_exitcode(status)
    return {"returncode": proc.returncode, "timed_out": timed_out.is_set(),
            "cpu": usage.ru_utime + usage.ru_stime, "wall": time.monotonic() - start}


def _excerpt(log_path):
    with open(log_path, "rb") as f:
        text = f.read().decode("utf-8", "replace").strip()
    return text[-STDERR_EXCERPT:] if text else "(no output)"


def run_file(converter, item, work_dir, timeout):
    """One converter on one file: the notes it found, or none and the reason it failed."""
    stem = os.path.join(work_dir, item["id"])
    out_path, log_path = stem + FORMATS[converter.fmt], stem + ".log"
    if os.path.exists(out_path):
        os.remove(out_path)
    run = _run_measured(converter.command(item, out_path), log_path, timeout)
    result = {"cpu": run["cpu"], "wall": run["wall"], "notes": [], "error": None}
    if run["timed_out"]:
        result["error"] = f"timed out after {timeout:g} s"
    elif run["returncode"] != 0:
        result["error"] = f"exit status {run['returncode']}: {_excerpt(log_path)}"
    elif not os.path.exists(out_path):
        result["error"] = f"wrote no {out_path}: {_excerpt(log_path)}"
    else:
        try:
            result["notes"] = READERS[converter.fmt](out_path)
        except Exception as e:  # any unreadable output is the converter's failure, not ours
            result["error"] = f"unreadable output: {type(e).__name__}: {e}"
    return result


def run_converter(converter, items, work_dir, jobs, timeout, on_error):
    """Runs the converter over every item, `jobs` at a time; results keep the items' order."""
    conv_dir = os.path.join(work_dir, converter.label)
    os.makedirs(conv_dir, exist_ok=True)

    def one(item):
        result = run_file(converter, item, conv_dir, timeout)
        if result["error"]:
            on_error(converter.label, item["id"], result["error"])
        return result

    with ThreadPoolExecutor(max_workers=jobs) as pool:
        return list(pool.map(one, items))
