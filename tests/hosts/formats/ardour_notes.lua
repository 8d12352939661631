-- A source of MIDI for a track of Ardour: three notes of the session's first two seconds, at their frames whatever the blocks.
ardour {
	["type"] = "dsp",
	name = "Test notes",
	category = "Test",
	license = "MIT",
	author = "Sonvelle",
	description = [[Plays three notes at the beginning of a session.]]
}

function dsp_ioconfig()
	return { { midi_in = 1, midi_out = 1, audio_in = 0, audio_out = 0 } }
end

local notes = {
	{ 4800, 0x90, 60, 100 }, { 9777, 0x90, 67, 64 }, { 24000, 0x80, 60, 0 },
	{ 36000, 0x80, 67, 0 }, { 48000, 0x90, 55, 127 }, { 90000, 0x80, 55, 0 },
}

function dsp_run(_, _, frames)
	if not Session:transport_rolling() then return end
	local start, count = Session:transport_sample(), 0
	for _, note in ipairs(notes) do
		if note[1] >= start and note[1] < start + frames then
			count = count + 1
			midiout[count] = { ["time"] = note[1] - start + 1, ["data"] = { note[2], note[3], note[4] } }
		end
	end
end
