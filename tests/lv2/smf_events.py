"""Prints the channel messages of a Standard MIDI File, one a line: milliseconds and bytes."""
import sys

import mido

midi = mido.MidiFile(sys.argv[1])
tempo = 500000
ticks = 0
for track in midi.tracks:
    for message in track:
        ticks += message.time
        if message.type == "set_tempo":
            tempo = message.tempo
        elif not message.is_meta:
            ms = ticks * tempo / (midi.ticks_per_beat * 1000)
            print(f"{ms:g}", " ".join(str(b) for b in message.bytes()))
