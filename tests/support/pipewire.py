# SPDX-License-Identifier: MIT
"""A desktop of PipeWire and its session manager, without hardware, and what is heard there."""

import re
import signal
import time

import numpy as np
from alone import RATE, AloneTest, Late, first_sound, read_wav, write_wav

QUANTUM = 32768  # samples of PipeWire's block: a busy machine has three quarters of a second
SERVER = """
context.properties = {{
    core.daemon = true
    core.name = pipewire-0
    support.dbus = false
    default.clock.rate = {rate}
    default.clock.allowed-rates = [ {rate} 48000 ]
    default.clock.quantum = {quantum}
    default.clock.min-quantum = {quantum}
    default.clock.max-quantum = {quantum}
    default.clock.quantum-limit = {quantum}
}}
context.spa-libs = {{
    audio.convert.* = audioconvert/libspa-audioconvert
    support.* = support/libspa-support
}}
context.modules = [
    {{ name = libpipewire-module-protocol-native }}
    {{ name = libpipewire-module-client-node }}
    {{ name = libpipewire-module-adapter }}
    {{ name = libpipewire-module-metadata }}
    {{ name = libpipewire-module-spa-node-factory }}
    {{ name = libpipewire-module-link-factory }}
    {{ name = libpipewire-module-session-manager }}
    {{ name = libpipewire-module-access }}
]
context.objects = [
    {{ factory = spa-node-factory
       args = {{ factory.name = support.node.driver node.name = Clock node.group = pipewire.dummy priority.driver = 20000 }} }}
    {speakers}
]
"""
SPEAKERS = """{{ factory = adapter
       args = {{ factory.name = support.null-audio-sink node.name = {name} media.class = Audio/Sink priority.session = {priority}
                 audio.position = [ FL FR ] object.linger = true monitor.channel-volumes = false }} }}"""
MANAGER = """
default_access.properties["enable-flatpak-portal"] = false
alsa_monitor.enabled = false
v4l2_monitor.enabled = false
libcamera_monitor.enabled = false
"""


class DesktopTest(AloneTest):
    """Two sets of loudspeakers, of which the session manager takes "television" by itself."""

    def setUp(self):
        super().setUp()
        speakers = (SPEAKERS.format(name=name, priority=priority) for name, priority in
                    (("speakers", 100), ("television", 900)))
        for file, lines in (
                ("pipewire/pipewire.conf", SERVER.format(rate=RATE, quantum=QUANTUM, speakers="\n    ".join(speakers))),
                *((f"pipewire/{name}.conf.d/alone.conf", f"context.properties = {{ default.clock.quantum-limit = {QUANTUM} }}\n")
                  for name in ("client", "client-rt", "pipewire-pulse")),
                ("wireplumber/main.lua.d/60-alone.lua", MANAGER),
                ("wireplumber/bluetooth.lua.d/60-alone.lua", "bluez_monitor.enabled = false\n")):
            path = self.home / ".config" / file
            path.parent.mkdir(parents=True)
            path.write_text(lines, encoding="ascii")

    def start_server(self):
        self.server = self.start("pipewire", PIPEWIRE_DEBUG="3")  # so that it tells which block was late
        self.wait_for("PipeWire", (self.work / "run/pipewire-0").exists, process=self.server)
        self.manager = self.start("wireplumber")

    def end_server(self):
        for process in (self.manager, self.server):
            process.kill()
            process.wait()

    def wait_for_port(self, name):
        self.wait_for(name, lambda: name in self.run_program("pw-link", "-i", "-o", code=None))

    def play(self, frames, *words, rate=RATE):
        self.run_program("pw-play", *words, write_wav(self.work / "song.wav", frames, rate))

    def record(self, speakers="speakers", rate=RATE):
        """Records four channels at once: what leaves by these speakers, and what went into the device."""
        self.recorder = self.start("pw-record", "--target", 0, "--format", "f32", "--rate", rate, "--channels", 4,
                                   "--channel-map", "FL,FR,RL,RR", "-P", "{ node.name = recorder }",
                                   self.work / "heard.wav")
        self.wait_for_port("recorder:input_RR")
        for source, place in ((speakers, "F"), ("vocafade", "R")):
            for side in "LR":
                self.run_program("pw-link", f"{source}:monitor_F{side}", f"recorder:input_{place}{side}")

    def heard(self):
        """Stops to record: what left by the speakers, and what went into the device."""
        time.sleep(4 * QUANTUM / RATE)
        self.recorder.send_signal(signal.SIGINT)
        self.recorder.wait(20)
        return np.split(read_wav(self.work / "heard.wav"), 2, axis=1)

    def assert_rendered(self, song, *changes, tolerance=0.0):
        """What was heard is our own rendering, one block after the song went in."""
        heard, entered = self.heard()
        length = len(song) - QUANTUM  # the player leaves out a last block that is not full
        start = first_sound(entered) - first_sound(song)
        if not np.array_equal(entered[start:start + length], song[:length]):
            raise Late("the player or the recorder lost a part of the song")
        try:
            self.assert_same_sound(write_wav(self.work / "begun.wav", song[:length]),
                                   write_wav(self.work / "came.wav", heard[start + QUANTUM:start + QUANTUM + length]),
                                   *changes, tolerance=tolerance)
        except AssertionError:
            if late := re.search(r"\(\S+\) client too slow", self.server.log.read_text()):
                raise Late(late[0]) from None
            raise
