#!/usr/bin/env python3
"""The public melodies played again by another General MIDI instrument, in another register,
or with another soundfont.

The public set plays each melody on one instrument in one register. This plays the melodies
of the chosen split on --program, --transpose semitones from the written melody (each file's
published transposition is undone first), renders them with the `fluidsynth` command (Debian
package fluidsynth) and a soundfont, and writes the benchmark's layout with the converter
settings of --preset. Each of the three left out keeps the file's own. Melodies with a note
outside --range are left out. With --apart, every note is played alone, that many seconds after
the one before began: what a tracker loses there is the instrument's own attack, not the note
before ringing into it.

    python3 bench/instrument_variants.py /tmp/recorder --program 74 --preset 20 --range 55 91
    python3 bench/instrument_variants.py /tmp/timgm --soundfont /usr/share/sounds/sf2/TimGM6mb.sf2
    python3 bench/instrument_variants.py /tmp/alone --apart 2
    python3 bench/accuracy.py --data /tmp/recorder --converter precise='...' --split all
"""

import argparse
import os
import subprocess
import sys
import tempfile
import wave

import mido
import numpy as np

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from transcription.dataset import default_data_dir, load_manifest, select_split, write_manifest  # noqa: E402
from transcription.notes import read_csv_notes  # noqa: E402

RATE = 44100
# The published files peak around -5 dBFS.
PEAK_DB = -4.0


def transposed_midi(source, target, shift, program):
    song = mido.MidiFile(source)
    for track in song.tracks:
        for i, message in enumerate(track):
            if message.type in ("note_on", "note_off"):
                track[i] = message.copy(note=message.note + shift)
            elif message.type == "program_change":
                track[i] = message.copy(program=program)
    song.save(target)


def spread_out(notes, apart):
    """The same notes, each alone: the first where it was, each next one `apart` seconds later.
    Whatever follows a note's onset and offset (its pitch, its velocity) comes along."""
    first = notes[0][0]
    return [(first + k * apart, first + k * apart + off - on, *rest)
            for k, (on, off, *rest) in enumerate(notes)]


def spread_midi(source, target, apart):
    """Every note of `source` on its own, as spread_out places them, with its own velocity."""
    played, sounding, now, program = [], {}, 0.0, []
    for message in mido.MidiFile(source):
        now += message.time
        if message.type == "program_change":
            program.append(message)
        elif message.type == "note_on" and message.velocity > 0:
            sounding[message.note] = (now, message.velocity)
        elif message.type in ("note_on", "note_off") and message.note in sounding:
            on, velocity = sounding.pop(message.note)
            played.append((on, now, message.note, velocity))
    events = []
    for on, off, note, velocity in spread_out(sorted(played), apart):
        events += [(on, 1, note, velocity), (off, 0, note, 0)]
    song = mido.MidiFile(ticks_per_beat=480)
    track = mido.MidiTrack([mido.MetaMessage("set_tempo", tempo=500000)] +
                           [m.copy(time=0) for m in program])
    song.tracks.append(track)
    ticks_per_second, last = 960, 0
    for at, _, note, velocity in sorted(events, key=lambda e: (e[0], e[1])):
        tick = round(at * ticks_per_second)
        track.append(mido.Message("note_on", note=note, velocity=velocity, time=tick - last))
        last = tick
    song.save(target)


def render(midi_path, soundfont, wav_path):
    """fluidsynth renders stereo at its own gain; the benchmark's files are mono and normalised."""
    with tempfile.NamedTemporaryFile(suffix=".wav") as raw:
        subprocess.run(["fluidsynth", "-ni", "-q", "-R", "0", "-C", "0", "-r", str(RATE), "-T", "wav",
                        "-F", raw.name, soundfont, midi_path], check=True, stdout=subprocess.DEVNULL)
        with wave.open(raw.name) as w:
            frames = np.frombuffer(w.readframes(w.getnframes()), dtype=np.int16).reshape(-1, w.getnchannels())
    mono = frames[:, 0].astype(float)
    mono *= 10 ** (PEAK_DB / 20) * 32767 / (np.max(np.abs(mono)) + 1e-9)
    with wave.open(wav_path, "wb") as w:
        w.setnchannels(1)
        w.setsampwidth(2)
        w.setframerate(RATE)
        w.writeframes(mono.astype(np.int16).tobytes())


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("out")
    parser.add_argument("--program", type=int, help="General MIDI program, 0-127")
    parser.add_argument("--preset", type=int, help="the converter's input preset")
    parser.add_argument("--transpose", type=int, help="semitones from the written melody")
    parser.add_argument("--range", type=int, nargs=2, default=(0, 127), metavar=("LOW", "HIGH"),
                        help="leave out melodies with a note outside these MIDI notes")
    parser.add_argument("--soundfont", default="/usr/share/sounds/sf2/FluidR3_GM.sf2")
    parser.add_argument("--split", default="all", choices=("dev", "heldout", "all"))
    parser.add_argument("--apart", type=float, default=0.0,
                        help="play every note alone, this many seconds after the one before began")
    args = parser.parse_args()

    data = default_data_dir(os.path.dirname(os.path.abspath(__file__)))
    os.makedirs(os.path.join(args.out, "audio"), exist_ok=True)
    os.makedirs(os.path.join(args.out, "gt"), exist_ok=True)
    items = []
    font = os.path.splitext(os.path.basename(args.soundfont))[0]
    for item in select_split(load_manifest(data), args.split):
        program = item["program"] if args.program is None else args.program
        preset = item["preset"] if args.preset is None else args.preset
        transpose = int(item["transpose"]) if args.transpose is None else args.transpose
        shift = transpose - int(item["transpose"])
        notes = [(on, off, note + shift) for on, off, note in read_csv_notes(item["gt"])]
        if min(n for _, _, n in notes) < args.range[0] or max(n for _, _, n in notes) > args.range[1]:
            continue
        file_id = f"{font}-gm{program}{transpose:+d}-{item['id']}"
        if args.apart > 0.0:
            notes = spread_out(notes, args.apart)
        with tempfile.TemporaryDirectory() as work:
            midi = os.path.join(work, "melody.mid")
            transposed_midi(os.path.join(data, item["midi"]), midi, shift, program)
            if args.apart > 0.0:
                spread_midi(midi, midi, args.apart)
            render(midi, args.soundfont, os.path.join(args.out, "audio", file_id + ".wav"))
        with open(os.path.join(args.out, "gt", file_id + ".csv"), "w") as gt:
            gt.write("onset,offset,midi\n")
            gt.writelines(f"{on:.4f},{off:.4f},{int(note)}\n" for on, off, note in notes)
        items.append(dict(item, id=file_id, audio=f"audio/{file_id}.wav", gt=f"gt/{file_id}.csv",
                          instrument=item["instrument"] if args.program is None else f"program {program}",
                          program=program, preset=preset, transpose=transpose, soundfont=font,
                          condition="alone" if args.apart > 0.0 else "variant"))
    write_manifest(args.out, items, f"variant with {font}")


if __name__ == "__main__":
    main()
