-- SPDX-License-Identifier: MIT
-- Opens a session, sets the plug-in's parameters and writes automation, saves it.
-- arg: folder, name, then PARAMETER=VALUE or SAMPLE:PARAMETER:VALUE, each normalised
AudioEngine:set_backend("None (Dummy)", "", "")
local session = load_session(arg[1], arg[2])
assert(session, "no session")
local insert = session:route_by_name("Song"):nth_plugin(0):to_insert()
local function control_of(parameter)
    local id = insert:plugin(0):nth_parameter(parameter, false) -- the LV2's port
    return insert:to_automatable():automation_control(
        Evoral.Parameter(ARDOUR.AutomationType.PluginAutomation, 0, id), false)
end
for i = 3, #arg do
    local parameter, value = arg[i]:match("^(%d+)=(.+)$")
    if parameter then
        -- It refuses what lies outside the parameter's range.
        assert(ARDOUR.LuaAPI.set_plugin_insert_param(insert, tonumber(parameter), tonumber(value)), arg[i])
    else
        local sample
        sample, parameter, value = arg[i]:match("^(%d+):(%d+):(.+)$")
        local list, control_list = ARDOUR.LuaAPI.plugin_automation(insert, tonumber(parameter))
        control_list:add(Temporal.timepos_t(tonumber(sample)), tonumber(value), false, false)
        control_list:set_interpolation(Evoral.InterpolationStyle.Discrete)
        control_of(tonumber(parameter)):set_automation_state(ARDOUR.AutoState.Play)
    end
end
for i = 0, insert:plugin(0):parameter_count() - 1 do
    print(("value\t%d\t%.9g"):format(i, ARDOUR.LuaAPI.get_plugin_insert_param(insert, i, 0)))
end
session:save_state("")
print("done\t")
io.flush()
close_session()
quit()
