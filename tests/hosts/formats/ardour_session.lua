-- ardour_session.lua make FOLDER FORMAT ID...: makes a session with a track on which a sine goes through the plug-ins with these
-- ids, each with its first parameter automated from end to end within a second. "plain" instead of "make": without that.
-- ardour_session.lua play FOLDER FORMAT ID PRESET: makes a session with a track on which notes are played by an instrument.
-- ardour_session.lua same FOLDER: opens a session again and saves it as it is.
io.stdout:setvbuf("no")
local backend = AudioEngine:set_backend("None (Dummy)", "", "")
backend:set_device_name("Silence")
backend:set_sample_rate(48000)
backend:set_buffer_size(256)

local function fail(text)
	print("ardour_session: " .. text)
	os.exit(1)
end

-- A thread of Ardour's connects new tracks a moment later, which the session has to know of.
local function wait_until_connected(track)
	for _ = 1, 500 do
		if track:output():audio(0):connected() then return end
		ARDOUR.LuaAPI.usleep(10000)
	end
	fail("the track leads nowhere")
end

local function save()
	Session:save_state("")
	close_session()
	print("saved")
	os.exit(0)
end

local task, folder, format = arg[1], arg[2], arg[3]
if task == "same" then
	local session = load_session(folder, "session")
	if not session then fail("the session cannot be opened") end
	save()
end

local function insert(track, processor, place, name)
	if processor:isnil() then fail(name .. " is not found") end
	if track:add_processor_by_index(processor, place, nil, true) ~= 0 then fail(name .. " cannot be inserted") end
end

-- Automates the first row that is a control: outputs, such as the latency, raise. Controls have numbers of their own.
local function automate(plugin, name)
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
	if not range then fail(name .. " has nothing to automate") end
	for n = 0, 300 do
		local parameter = Evoral.Parameter(ARDOUR.AutomationType.PluginAutomation, 0, n)
		control = plugin:to_automatable():automation_control(parameter, false)
		if not control:isnil() then break end
	end
	if control:isnil() then fail(name .. " has no controls") end
	control:set_automation_state(ARDOUR.AutoState.Play)
	print("automated " .. range.label)
end

create_session(folder, "session", 48000)
local last, mode = ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal
if task == "play" then
	local midi, stereo = ARDOUR.ChanCount(ARDOUR.DataType("midi"), 1), ARDOUR.ChanCount(ARDOUR.DataType("audio"), 2)
	local tracks = Session:new_midi_track(midi, stereo, true, ARDOUR.PluginInfo(), nil, nil, 1, "Track", last, mode, true)
	for track in tracks:iter() do
		insert(track, ARDOUR.LuaAPI.new_luaproc(Session, "Test notes"), 0, "the source of notes")
		insert(track, ARDOUR.LuaAPI.new_plugin(Session, arg[4], ARDOUR.PluginType[format], arg[5]), 1, arg[4])
		wait_until_connected(track)
	end
	save()
end

local tracks = Session:new_audio_track(2, 2, nil, 1, "Track", last, mode, true)
local track
for each in tracks:iter() do track = each end
insert(track, ARDOUR.LuaAPI.new_luaproc(Session, "SinGen"), 0, "the source of a sine")
for i = 4, #arg do
	local plugin = ARDOUR.LuaAPI.new_plugin(Session, arg[i], ARDOUR.PluginType[format], "")
	insert(track, plugin, i - 3, arg[i])
	if task == "make" then automate(plugin, arg[i]) end
end
wait_until_connected(track)
save()
