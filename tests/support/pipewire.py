# SPDX-License-Identifier: MIT
"""PipeWire and its session manager as the tests start them: without hardware, without the services of a desktop."""

SERVER = """
context.properties = {{
    core.daemon = true
    core.name = pipewire-0
    support.dbus = false
    default.clock.rate = {rate}
    default.clock.allowed-rates = [ {rates} ]
    default.clock.quantum = {quantum}
    default.clock.min-quantum = {quantum}
    default.clock.max-quantum = {quantum}
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


def configure(folder, rates, quantum, **speakers):
    """Writes the settings into this configuration folder: the first rate at first, blocks of `quantum` samples, and
    loudspeakers by name, each with the session manager's priority."""
    (folder / "pipewire").mkdir(parents=True)
    (folder / "pipewire/pipewire.conf").write_text(SERVER.format(
        rate=rates[0], rates=" ".join(map(str, rates)), quantum=quantum,
        speakers="\n    ".join(SPEAKERS.format(name=name, priority=speakers[name]) for name in speakers)), encoding="ascii")
    for part, lines in (("main", MANAGER), ("bluetooth", "bluez_monitor.enabled = false\n")):
        manager = folder / f"wireplumber/{part}.lua.d"
        manager.mkdir(parents=True)
        (manager / "60-alone.lua").write_text(lines, encoding="ascii")
