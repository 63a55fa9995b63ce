#!/usr/bin/env python3
"""The public melodies as other rooms, microphones and interfaces would deliver them.

A tracker tuned on one set of clean renders can get worse anywhere else without showing it
there; a change is only better if it holds up under every one of these. Each run writes one
condition of the chosen melodies in the benchmark's layout:

  reverb       sox's `reverb 40 50 60`, a mid-sized room
  noise        white noise --db (default 20) dB below the sound's own level
  hum          mains hum at --db (default 40) dB below full scale: 50, 100 and 150 Hz
  quieter      the whole file --db (default 20) dB down
  rate         resampled by sox to --rate Hz (default 48000)
  tremolo      the level swung by --db (default 9) dB, peak to trough, 6 times a second:
               a singer's or a flautist's vibrato moves the level too, a guitar amplifier's
               tremolo or an ensemble's beating more
  delay        --samples (default 16) samples of silence before the sound, the true notes
               moved with it: the same performance started a fraction of a millisecond later,
               which meets the tracker's frames at another phase. A score that changes here
               by more than a change to the tracker gains is no evidence for that change.

    python3 bench/recording_conditions.py /tmp/reverb reverb --melodies 1 12
    python3 bench/recording_conditions.py /tmp/r48k rate --rate 48000
    python3 bench/recording_conditions.py /tmp/delay11 delay --samples 11
    python3 bench/accuracy.py --data /tmp/reverb --converter precise='...' --split all
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile
import wave

import numpy as np

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from transcription.dataset import default_data_dir, load_manifest, select_split, write_manifest  # noqa: E402
from transcription.notes import read_csv_notes  # noqa: E402

DEFAULT_DB = {"noise": 20.0, "hum": 40.0, "quieter": 20.0, "tremolo": 9.0}
# Samples quieter than this (16-bit scale) are the silence between notes, which must not lower
# the level the noise is measured against.
SILENT = 100
HUM = ((50.0, 1.0), (100.0, 0.5), (150.0, 0.3))
TREMOLO_HZ = 6.0


def read(path):
    with wave.open(path) as w:
        samples = np.frombuffer(w.readframes(w.getnframes()), dtype=np.int16).astype(float)
        return samples, w.getframerate()


def write(path, samples, rate):
    with wave.open(path, "wb") as w:
        w.setnchannels(1)
        w.setsampwidth(2)
        w.setframerate(rate)
        w.writeframes(np.clip(np.round(samples), -32768, 32767).astype(np.int16).tobytes())


def write_notes(source, target, later):
    """Copies the true notes of `source` to `target`, each `later` seconds later."""
    with open(target, "w") as f:
        f.write("onset,offset,midi\n")
        for onset, offset, midi in read_csv_notes(source):
            f.write(f"{onset + later:.6f},{offset + later:.6f},{midi:g}\n")


def change(condition, source, target, db, rate, samples, rng):
    """Writes `source` (any format sox reads) under `condition` to the WAV file `target`."""
    if condition == "reverb":
        subprocess.run(["sox", source, target, "reverb", "40", "50", "60"], check=True)
        return 0.0
    if condition == "rate":
        subprocess.run(["sox", source, "-r", str(rate), target], check=True)
        return 0.0
    with tempfile.NamedTemporaryFile(suffix=".wav") as plain:
        subprocess.run(["sox", source, "-b", "16", "-c", "1", plain.name], check=True)
        x, sr = read(plain.name)
    if condition == "noise":
        level = np.sqrt(np.mean(x[np.abs(x) > SILENT] ** 2))
        x = x + rng.normal(0.0, level * 10 ** (-db / 20), x.size)
    elif condition == "hum":
        t = np.arange(x.size) / sr
        x = x + 32768 * 10 ** (-db / 20) * sum(a * np.sin(2 * np.pi * f * t) for f, a in HUM)
    elif condition == "quieter":
        x = x * 10 ** (-db / 20)
    elif condition == "tremolo":
        t = np.arange(x.size) / sr
        x = x * 10 ** (db / 40 * np.sin(2 * np.pi * TREMOLO_HZ * t) - db / 40)
    elif condition == "delay":
        x = np.concatenate([np.zeros(samples), x])
    write(target, x, sr)
    return samples / sr if condition == "delay" else 0.0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("out")
    parser.add_argument("condition", choices=("reverb", "noise", "hum", "quieter", "rate", "tremolo", "delay"))
    parser.add_argument("--db", type=float,
                        help="how far down the noise, the hum or the whole file is; how deep the tremolo swings")
    parser.add_argument("--rate", type=int, default=48000)
    parser.add_argument("--samples", type=int, default=16, help="delay: how many samples later")
    parser.add_argument("--melodies", type=int, nargs=2, default=(1, 99), metavar=("FIRST", "LAST"),
                        help="only the files whose number (p01 is 1) lies in this range")
    parser.add_argument("--split", default="all", choices=("dev", "heldout", "all"))
    parser.add_argument("--data", help="the data set to change (default: the public set)")
    args = parser.parse_args()

    data = args.data or default_data_dir(os.path.dirname(os.path.abspath(__file__)))
    db = args.db if args.db is not None else DEFAULT_DB.get(args.condition, 0.0)
    rng = np.random.default_rng(5)
    os.makedirs(os.path.join(args.out, "audio"), exist_ok=True)
    os.makedirs(os.path.join(args.out, "gt"), exist_ok=True)
    items = []
    for item in select_split(load_manifest(data), args.split):
        # The melody's number, also in the ids of derived sets ("slide-p01_...").
        number = int(re.search(r"(?:^|-)p(\d+)_", item["id"]).group(1))
        if not args.melodies[0] <= number <= args.melodies[1]:
            continue
        later = change(args.condition, item["audio"], os.path.join(args.out, "audio", item["id"] + ".wav"), db,
                       args.rate, args.samples, rng)
        write_notes(item["gt"], os.path.join(args.out, "gt", item["id"] + ".csv"), later)
        items.append(dict(item, audio=f"audio/{item['id']}.wav", gt=f"gt/{item['id']}.csv",
                          condition=args.condition))
    amount = f"{args.samples} samples" if args.condition == "delay" else f"{db:g} dB"
    write_manifest(args.out, items, f"{args.condition} ({amount})")


if __name__ == "__main__":
    main()
