-- SPDX-License-Identifier: MIT
-- Opens a session and renders the track with its plug-in into the session's folder, as "bounced".
-- arg: folder, name, frames
AudioEngine:set_backend("None (Dummy)", "", "")
local session = load_session(arg[1], arg[2])
assert(session, "no session")
local track = session:route_by_name("Song"):to_track()
local region = track:bounce_range(0, tonumber(arg[3]), ARDOUR.InterThreadInfo(), track:nth_plugin(0), true, "bounced")
print(("bounced\t%s"):format(not region:isnil()))
print("done\t")
io.flush()
close_session()
quit()
