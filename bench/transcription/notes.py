"""Reading notes from the formats converters produce: Standard MIDI Files, note CSVs and
aubionotes' text output. Every reader returns a list of (onset s, offset s, midi) tuples sorted
by onset; pitch may be fractional for CSV and aubio input."""

import csv

import mido


def read_csv_notes(path):
    """Rows of `onset,offset,midi`; a header or any row that does not start with a number is
    skipped, so the ground-truth files and converter CSVs read the same way."""
    notes = []
    with open(path, newline="") as f:
        for row in csv.reader(f):
            if len(row) < 3:
                continue
            try:
                onset, offset, midi = float(row[0]), float(row[1]), float(row[2])
            except ValueError:
                continue
            notes.append((onset, offset, midi))
    return sorted(notes)


def read_midi_notes(path):
    """Pairs note-on with the next note-off of the same key and channel. Iterating a MidiFile
    merges the tracks and converts ticks to seconds through every tempo change, so a file
    written at any tempo map scores the same as the audio it describes. A note-on for a key
    that is already sounding ends the earlier note there (a re-strike), and notes still
    sounding at the end of the file end at the last event."""
    notes = []
    sounding = {}
    now = 0.0
    for msg in mido.MidiFile(path):
        now += msg.time
        if msg.type not in ("note_on", "note_off"):
            continue
        key = (msg.channel, msg.note)
        if key in sounding:
            notes.append((sounding.pop(key), now, float(msg.note)))
        if msg.type == "note_on" and msg.velocity > 0:
            sounding[key] = now
    for (_, note), onset in sounding.items():
        notes.append((onset, now, float(note)))
    return sorted(notes)


def read_aubio_notes(path):
    """aubionotes prints `midi onset offset` per note, plus lone timestamps (the first onset
    and the end of the file) that carry no note."""
    notes = []
    with open(path) as f:
        for line in f:
            fields = line.split()
            if len(fields) != 3:
                continue
            midi, onset, offset = (float(x) for x in fields)
            if midi > 0:
                notes.append((onset, offset, midi))
    return sorted(notes)


READERS = {"mid": read_midi_notes, "csv": read_csv_notes, "aubio": read_aubio_notes}
