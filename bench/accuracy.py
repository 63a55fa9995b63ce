#!/usr/bin/python3
"""Scores audio-to-MIDI converters on the transcription benchmark set, side by side.

    bench/accuracy.py --aubio \\
        --converter classic='build/app/vocato convert {in} -o {out} --quiet --preset {preset}' \\
        --split dev -j 2 --report bench/results-dev.md --json bench/results-dev.json

See bench/README.md for the placeholders, the split and what each number means."""

import argparse
import datetime
import json
import os
import sys
import tempfile
from collections import OrderedDict

SCRIPT_DIR = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, SCRIPT_DIR)

from transcription import dataset, report, scoring  # noqa: E402
from transcription.converters import AUBIO_TEMPLATE, Converter, run_converter  # noqa: E402
from transcription.notes import read_csv_notes  # noqa: E402


def parse_args(argv):
    p = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    p.add_argument("--converter", action="append", default=[], metavar="LABEL[:FMT]=COMMAND",
                   help="a converter command with {in} and {out} (also {preset}, {program}, "
                        "{id}); FMT is mid (default), csv or aubio")
    p.add_argument("--aubio", action="store_true", help="add aubionotes as converter 'aubio'")
    p.add_argument("--data", help="benchmark folder (default: <repo>/../shared/bench-data/public)")
    p.add_argument("--split", choices=dataset.SPLITS, default="all")
    p.add_argument("-j", "--jobs", type=int, default=2, help="files converted at once")
    p.add_argument("--timeout", type=float, default=300.0, help="seconds per file and converter")
    p.add_argument("--report", help="also write the markdown report here")
    p.add_argument("--json", help="write every number as JSON here")
    p.add_argument("--keep", metavar="DIR", help="keep the converters' outputs and logs in DIR")
    args = p.parse_args(argv)
    try:
        converters = [Converter.parse(definition) for definition in args.converter]
    except ValueError as e:
        p.error(str(e))
    if args.aubio:
        converters.append(Converter("aubio", AUBIO_TEMPLATE, "aubio"))
    if not converters:
        p.error("give at least one --converter or --aubio")
    if len({c.label for c in converters}) != len(converters):
        p.error("converter labels must differ")
    if args.jobs < 1:
        p.error("-j needs at least 1")
    return args, converters


def score_converter(converter, items, truth, work_dir, args):
    def on_error(label, file_id, error):
        print(f"{label}: {file_id} failed: {error}", file=sys.stderr)

    runs = run_converter(converter, items, work_dir, args.jobs, args.timeout, on_error)
    files = OrderedDict()
    for item, run in zip(items, runs):
        s = scoring.score_file(truth[item["id"]], run["notes"])
        s.update(duration=item["duration"], cpu=run["cpu"], wall=run["wall"],
                 error=run["error"], instrument=item["instrument"])
        files[item["id"]] = s
    per_instrument = OrderedDict()
    for inst in OrderedDict.fromkeys(item["instrument"] for item in items):
        per_instrument[inst] = scoring.pool([s for s in files.values()
                                             if s["instrument"] == inst])
    return {"command": converter.template, "format": converter.fmt,
            "overall": scoring.pool(list(files.values())),
            "per_instrument": per_instrument, "files": files}


def main(argv=None):
    args, converters = parse_args(argv)
    data_dir = args.data or dataset.default_data_dir(SCRIPT_DIR)
    items = dataset.select_split(dataset.load_manifest(data_dir), args.split)
    truth = {item["id"]: read_csv_notes(item["gt"]) for item in items}
    meta = {"split": args.split, "files": len(items), "jobs": args.jobs,
            "audio_seconds": sum(item["duration"] for item in items),
            "n_ref": sum(len(n) for n in truth.values()),
            "date": datetime.datetime.now().strftime("%Y-%m-%d %H:%M"),
            "file_ids": [item["id"] for item in items]}

    with tempfile.TemporaryDirectory(prefix="vocato-bench-") as tmp:
        work_dir = args.keep or tmp
        results = OrderedDict()
        for converter in converters:
            print(f"running {converter.label} on {len(items)} files ...", file=sys.stderr)
            results[converter.label] = score_converter(converter, items, truth, work_dir, args)
    scoring.add_shared_latency(results)

    text = report.markdown(results, meta)
    print(text)
    if args.report:
        with open(args.report, "w") as f:
            f.write(text)
    if args.json:
        with open(args.json, "w") as f:
            json.dump({"meta": meta, "definitions": report.DEFINITIONS, "converters": results},
                      f, indent=1)
            f.write("\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
