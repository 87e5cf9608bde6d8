# SPDX-License-Identifier: MIT
"""Compares what a host rendered through the VST plug-in with what a host that does nothing else gives: this program.

  compare_rendering.py PLUGIN SONG.wav HOST.wav [SAMPLE:PARAMETER:VALUE ...]

Parameters, from 0 to 1, are set at the given samples of the song; a block is split there, as hosts with sample-accurate
automation do. How much silence a host sends ahead of the song is the host's affair, so the number of samples that gives
the smallest difference is found:

  {"silence": 17, "difference": 0.0, "frames": 176400, "peak": 0.43}

`difference` is the greatest absolute one over both channels and the whole song. The host's file starts with the song; the
plug-in's delay counts as part of the sound.
"""

import ctypes
import itertools
import json
import sys

import numpy as np
import soundfile

HOP = 341  # samples from one of the engine's frames to the next
BLOCK = 1024
OTHER_PHASE = 1e-3  # a difference that no rounding explains: this silence is not the one

Pointer, Int, Word = ctypes.c_void_p, ctypes.c_int32, ctypes.c_ssize_t
Dispatcher = ctypes.CFUNCTYPE(Word, Pointer, Int, Int, Word, Pointer, ctypes.c_float)


class Descriptor(ctypes.Structure):
    """What a plug-in's entry gives, as far as it is needed here."""
    _fields_ = [("magic", Int), ("dispatch", Dispatcher), ("process", Pointer),
                ("set_parameter", ctypes.CFUNCTYPE(None, Pointer, Int, ctypes.c_float)), ("get_parameter", Pointer),
                ("counts_and_flags", Int * 5), ("of_the_host", Word * 2), ("delay", Int * 4), ("objects", Pointer * 2),
                ("identifier_and_version", Int * 2),
                ("process_replacing", ctypes.CFUNCTYPE(None, Pointer, Pointer, Pointer, Int))]


class Effect:
    """The plug-in, opened, and not started yet."""
    OPEN, SET_RATE, SET_BLOCK, RUN = 0, 10, 11, 12  # opcodes
    answer = Dispatcher(lambda _effect, opcode, *_: 2400 if opcode == 1 else 0)  # the interface's version

    def __init__(self, path, rate):
        entry = ctypes.CDLL(path).VSTPluginMain
        entry.restype = ctypes.POINTER(Descriptor)
        self.pointer = entry(self.answer)
        self.calls = self.pointer.contents
        self.block = np.zeros((2, BLOCK), "f")
        self.channels = (Pointer * 2)(*(channel.ctypes.data for channel in self.block))
        self.dispatch(self.OPEN)
        self.dispatch(self.SET_RATE, number=rate)
        self.dispatch(self.SET_BLOCK, BLOCK)

    def dispatch(self, opcode, value=0, number=0.0):
        self.calls.dispatch(self.pointer, opcode, 0, value, None, number)

    def restart(self):
        self.dispatch(self.RUN, 0)
        self.dispatch(self.RUN, 1)

    def set(self, changes):
        for parameter, value in changes:
            self.calls.set_parameter(self.pointer, parameter, value)

    def process(self, sound):
        """What comes out for this sound, no longer than a block, until the next call."""
        count = sound.shape[1]
        self.block[:, :count] = sound
        self.calls.process_replacing(self.pointer, self.channels, self.channels, count)
        return self.block[:, :count]


def read(path):
    sound, rate = soundfile.read(path, dtype="float32")
    return sound.T, rate


def main(plugin, song_path, host_path, *words):
    (song, rate), (host, host_rate) = read(song_path), read(host_path)
    length = song.shape[1]
    if song.shape[0] != 2 or host.shape[0] != 2 or rate != host_rate or host.shape[1] < length:
        sys.exit(f"these cannot be compared: {song.shape} at {rate} Hz, {host.shape} at {host_rate} Hz")
    changes = {}
    for sample, parameter, value in (word.split(":") for word in words):
        changes.setdefault(int(sample), []).append((int(parameter), float(value)))
    edges = sorted({*range(0, length, BLOCK), *changes, 0, length})
    effect = Effect(plugin, rate)

    def compare(silence):
        """Renders after this silence, until the end or a difference that no rounding explains: the samples until there,
        negative, so that less is better; the difference; the silence."""
        effect.restart()
        effect.set(changes.get(0, ()))
        for rest in range(silence, 0, -BLOCK):
            effect.process(np.zeros((2, min(rest, BLOCK)), "f"))
        worst = 0.0
        for begin, end in itertools.pairwise(edges):
            if begin > 0:
                effect.set(changes.get(begin, ()))
            difference = np.abs(effect.process(song[:, begin:end]) - host[:, begin:end]).max()
            if not difference <= worst:
                worst = float(difference)
            if not worst <= OTHER_PHASE:
                break
        return -end, worst, silence

    # Where the frames lie: any other place differs grossly.
    best = min(map(compare, range(HOP)))
    # How many frames there were: the difference grows with the distance from the right number.
    step = 256 * HOP
    while step >= HOP and best[1] > 0.0:
        places = [place for place in (best[2] + step, best[2] - step) if place >= 0]
        closer = min(best, *map(compare, places))
        if closer is best:
            step //= 2
        best = closer
    print(json.dumps({"silence": best[2], "difference": best[1], "frames": -best[0], "peak": float(np.abs(host).max())}))


if __name__ == "__main__":
    main(*sys.argv[1:])
