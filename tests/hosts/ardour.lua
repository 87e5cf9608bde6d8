-- SPDX-License-Identifier: MIT
-- What the tests do in Ardour's Lua interpreter. arg: the session's folder, the name of a step below, its arguments.
AudioEngine:set_backend("None (Dummy)", "", "")
local session
local steps = {}

-- One stereo track, "Song", that goes into the master bus unpanned, with the plug-in on it: its kind (LXVST or LV2), and
-- what Ardour knows it by.
function steps.make(kind, name)
    for plugin in ARDOUR.LuaAPI.list_plugins():iter() do
        if plugin.type == ARDOUR.PluginType[kind] then
            print(("plugin\t%s\t%s\t%s\t%d\t%d"):format(plugin.name, plugin.creator, plugin.unique_id,
                plugin.n_inputs:n_audio(), plugin.n_outputs:n_audio()))
        end
    end
    local vocafade = ARDOUR.LuaAPI.new_plugin(session, name, ARDOUR.PluginType[kind], "")
    assert(not vocafade:isnil(), "Vocafade is not known")
    local track = session:new_audio_track(2, 2, nil, 1, "Song", ARDOUR.PresentationInfo.max_order,
        ARDOUR.TrackMode.Normal, true):front()
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
    session:master_out():panner_shell():set_bypassed(true)
    session:save_state("")
end

-- Sets parameters, PARAMETER=VALUE, and writes automation, SAMPLE:PARAMETER:VALUE; says what the values are.
function steps.set(...)
    local insert = session:route_by_name("Song"):nth_plugin(0):to_insert()
    for _, word in ipairs({...}) do
        local parameter, value = word:match("^(%d+)=(.+)$")
        if parameter then
            -- It refuses what lies outside the parameter's range.
            assert(ARDOUR.LuaAPI.set_plugin_insert_param(insert, tonumber(parameter), tonumber(value)), word)
        else
            local sample
            sample, parameter, value = word:match("^(%d+):(%d+):(.+)$")
            local _, list = ARDOUR.LuaAPI.plugin_automation(insert, tonumber(parameter))
            list:add(Temporal.timepos_t(tonumber(sample)), tonumber(value), false, false)
            list:set_interpolation(Evoral.InterpolationStyle.Discrete)
            local id = insert:plugin(0):nth_parameter(tonumber(parameter), false) -- the LV2's port
            insert:to_automatable():automation_control(
                Evoral.Parameter(ARDOUR.AutomationType.PluginAutomation, 0, id), false):set_automation_state(
                ARDOUR.AutoState.Play)
        end
    end
    for i = 0, insert:plugin(0):parameter_count() - 1 do
        print(("value\t%d\t%.9g"):format(i, ARDOUR.LuaAPI.get_plugin_insert_param(insert, i, 0)))
    end
    session:save_state("")
end

-- Renders so many samples of the track with its plug-in into the session's folder, as "bounced".
function steps.bounce(samples)
    local track = session:route_by_name("Song"):to_track()
    local region = track:bounce_range(0, tonumber(samples), ARDOUR.InterThreadInfo(), track:nth_plugin(0), true, "bounced")
    print(("bounced\t%s"):format(not region:isnil()))
end

-- Renders the session into a folder, by a preset of that identifier.
function steps.export(folder, preset)
    -- The latencies of the ports are set by other threads after the session is loaded. What is rendered before comes 16
    -- samples early now and then, or the export waits forever.
    ARDOUR.LuaAPI.usleep(1500000)
    local export = session:simple_export()
    export:set_folder(folder)
    assert(export:set_preset(preset), "no preset")
    print(("rendered\t%s"):format(export:run_export()))
    io.flush() -- what comes now may die
end

if arg[2] == "make" then
    session = create_session(arg[1], "session", 44100)
else
    session = load_session(arg[1], "session")
end
assert(session, "no session")
steps[arg[2]](table.unpack(arg, 3))
print("done\t")
io.flush()
close_session()
quit()
