"""The benchmark set: where it lives, its manifest, and the fixed dev/held-out split."""

import json
import os
import subprocess
from collections import defaultdict

SPLITS = ("dev", "heldout", "all")


def default_data_dir(script_dir):
    """The bench data sits beside the repository (`<repo>/../shared/bench-data/public`). The
    git top level is asked first so that a symlinked or copied script still finds it; outside
    a checkout the script's own place in the tree decides."""
    try:
        top = subprocess.run(["git", "-C", script_dir, "rev-parse", "--show-toplevel"],
                             capture_output=True, text=True, check=True).stdout.strip()
    except (OSError, subprocess.CalledProcessError):
        top = os.path.dirname(os.path.abspath(script_dir))
    return os.path.normpath(os.path.join(top, "..", "shared", "bench-data", "public"))


def load_manifest(data_dir):
    with open(os.path.join(data_dir, "manifest.json")) as f:
        items = json.load(f)["items"]
    for item in items:
        for key in ("audio", "gt"):
            item[key] = os.path.join(data_dir, item[key])
    return items


def write_manifest(out_dir, items, name):
    """The manifest of a data set made from another one, which `load_manifest` reads back;
    `items` name their audio and ground truth relative to `out_dir`."""
    with open(os.path.join(out_dir, "manifest.json"), "w") as f:
        json.dump({"items": items, "set": name}, f, indent=1)
    print(f"{len(items)} files in {out_dir}")


def heldout_ids(items):
    """The held-out part is chosen from file ids alone, never from results. Instruments are
    ranked by their first id and each one's files are sorted by id; file p of instrument r is
    held out when (p + r) % 3 == 2. That is every third melody of each instrument, rotating so
    that each articulation (legato, 90 %, 75 %) is held out equally often."""
    by_instrument = defaultdict(list)
    for item in items:
        by_instrument[item["instrument"]].append(item["id"])
    ranked = sorted(by_instrument.values(), key=min)
    held = set()
    for rank, ids in enumerate(ranked):
        for position, file_id in enumerate(sorted(ids)):
            if (position + rank) % 3 == 2:
                held.add(file_id)
    return held


def select_split(items, split):
    if split == "all":
        return list(items)
    held = heldout_ids(items)
    want_held = split == "heldout"
    return [item for item in items if (item["id"] in held) == want_held]
