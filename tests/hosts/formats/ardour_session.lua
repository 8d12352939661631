-- ardour_session.lua make|same FOLDER FORMAT ID...: "make" makes a session with a track on which a sine goes through the
-- plug-ins with these ids, each with its first parameter automated from end to end within a second; "same" opens it again
-- and saves it as it is.
io.stdout:setvbuf("no")
local backend = AudioEngine:set_backend("None (Dummy)", "", "")
backend:set_device_name("Silence")
backend:set_sample_rate(48000)
backend:set_buffer_size(256)

local function fail(text)
	print("ardour_session: " .. text)
	os.exit(1)
end

local task, folder, format = arg[1], arg[2], arg[3]
if task == "same" then
	local session = load_session(folder, "session")
	if not session then fail("the session cannot be opened") end
	Session:save_state("")
	close_session()
	print("saved")
	os.exit(0)
end

create_session(folder, "session", 48000)
local tracks = Session:new_audio_track(2, 2, nil, 1, "Track", ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true)
local track
for each in tracks:iter() do track = each end
track:add_processor_by_index(ARDOUR.LuaAPI.new_luaproc(Session, "SinGen"), 0, nil, true)
for i = 4, #arg do
	local plugin = ARDOUR.LuaAPI.new_plugin(Session, arg[i], ARDOUR.PluginType[format], "")
	if plugin:isnil() then fail(arg[i] .. " is not found") end
	if track:add_processor_by_index(plugin, i - 3, nil, true) ~= 0 then fail(arg[i] .. " cannot be inserted") end
	-- The first row that is a control: outputs, such as the latency, raise. Controls have numbers of their own.
	local range, control
	for n = 0, 300 do
		local found, list, controls, descriptor = pcall(ARDOUR.LuaAPI.plugin_automation, plugin, n)
		if found and not list:isnil() then
			controls:add(Temporal.timepos_t(0), descriptor.lower, false, true)
			controls:add(Temporal.timepos_t(48000), descriptor.upper, false, true)
			range = descriptor
			break
		end
	end
	if not range then fail(arg[i] .. " has nothing to automate") end
	for n = 0, 300 do
		local parameter = Evoral.Parameter(ARDOUR.AutomationType.PluginAutomation, 0, n)
		control = plugin:to_automatable():automation_control(parameter, false)
		if not control:isnil() then break end
	end
	if control:isnil() then fail(arg[i] .. " has no controls") end
	control:set_automation_state(ARDOUR.AutoState.Play)
	print("automated " .. range.label)
end
Session:save_state("")
close_session()
print("saved")
os.exit(0)
