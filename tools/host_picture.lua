-- host_picture.lua FOLDER URI...: makes a session of Ardour with one track, "Voice", that goes through these LV2 plug-ins.
io.stdout:setvbuf("no")
local backend = AudioEngine:set_backend("None (Dummy)", "", "")
backend:set_device_name("Silence")
backend:set_sample_rate(48000)
backend:set_buffer_size(1024)

create_session(arg[1], "session", 48000)
local tracks = Session:new_audio_track(1, 2, nil, 1, "Voice", ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true)
local track
for each in tracks:iter() do track = each end
for i = 2, #arg do
	local plugin = ARDOUR.LuaAPI.new_plugin(Session, arg[i], ARDOUR.PluginType.LV2, "")
	if plugin:isnil() or track:add_processor_by_index(plugin, i - 2, nil, true) ~= 0 then
		print("host_picture: " .. arg[i] .. " cannot be inserted")
		os.exit(1)
	end
	plugin:activate()
end
Session:save_state("")
close_session()
print("saved")
quit()
