-- SPDX-License-Identifier: MIT
-- Makes a session with one stereo track, "Song", that goes into the master bus unpanned, with Vocafade on it.
-- arg: folder, name, rate, the plug-in's kind (LXVST or LV2) and what Ardour knows it by
AudioEngine:set_backend("None (Dummy)", "", "")
local session = create_session(arg[1], arg[2], tonumber(arg[3]))
assert(session, "no session")

for plugin in ARDOUR.LuaAPI.list_plugins():iter() do
    if plugin.type == ARDOUR.PluginType[arg[4]] then
        print(("plugin\t%s\t%s\t%s\t%d\t%d"):format(plugin.name, plugin.creator, plugin.unique_id,
            plugin.n_inputs:n_audio(), plugin.n_outputs:n_audio()))
    end
end

local vocafade = ARDOUR.LuaAPI.new_plugin(session, arg[5], ARDOUR.PluginType[arg[4]], "")
assert(not vocafade:isnil(), "Vocafade is not known")
local tracks = session:new_audio_track(2, 2, nil, 1, "Song", ARDOUR.PresentationInfo.max_order,
    ARDOUR.TrackMode.Normal, true)
for track in tracks:iter() do
    assert(track:add_processor_by_index(vocafade, 0, nil, true) == 0, "Vocafade does not go onto the track")
    local insert = track:nth_plugin(0):to_insert()
    local plugin = insert:plugin(0)
    print(("instance\t%s\t%s\t%d\t%d"):format(plugin:name(), plugin:maker(), plugin:parameter_count(),
        insert:signal_latency()))
    for i = 0, plugin:parameter_count() - 1 do
        local _, out = plugin:get_parameter_descriptor(i, ARDOUR.ParameterDescriptor())
        print(("parameter\t%d\t%s\t%g\t%g\t%s\t%s"):format(i, out[2].label, out[2].lower, out[2].upper, out[2].toggled,
            out[2].logarithmic))
    end
    track:panner_shell():set_bypassed(true)
end
session:master_out():panner_shell():set_bypassed(true)
session:save_state("")
print("done\t")
io.flush()
close_session()
quit()
