"""The sounds that Sonvelle brings along, all of them synthesized: tools/make_content.py writes them."""
