"""Scoring audio-to-MIDI converters against notes with known onsets, offsets and pitches."""
