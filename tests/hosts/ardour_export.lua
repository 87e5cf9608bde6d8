-- SPDX-License-Identifier: MIT
-- Opens a session and renders it. arg: folder, name, folder of the rendering, identifier of the export's preset
AudioEngine:set_backend("None (Dummy)", "", "")
local session = load_session(arg[1], arg[2])
assert(session, "no session")
-- The latencies of the ports are set by other threads after the session is loaded. What is rendered before comes 16
-- samples early now and then, or the export waits forever.
ARDOUR.LuaAPI.usleep(1500000)
local export = session:simple_export()
export:set_folder(arg[3])
assert(export:set_preset(arg[4]), "no preset")
print(("rendered\t%s"):format(export:run_export()))
io.flush() -- what comes now may die
close_session()
quit()
