from tree_case import TreeCase

TOOL = "check_words.py"

# Written in two halves, because this file is checked as well.
PAPER = "speci" + "fication"
MESSAGE = "Formatting string ends in an argument " + PAPER + "."


class CheckWords(TreeCase):
    def test_every_unwanted_word_of_a_text_is_found(self):
        words = {
            PAPER: "paper",
            PAPER.upper(): "paper",
            "spec" + ".md": "spec-file",
            "Part" + " 4.1": "part-number",
            "Parts" + " 4.10": "part-number",
            "A-" + "030": "rule-number",
            "FX-" + "2": "rule-number",
            "(D" + "12)": "rule-number",
            "/wor" + "k/": "workplace-path",
            "/home" + "/anna/": "workplace-path",
            "/roo" + "t/": "workplace-path",
        }
        for word, name in words.items():
            with self.subTest(word):
                self.write("docs/page.md", f"first\nsee {word} there\n")
                self.assert_finds(TOOL, f"docs/page.md:2: {word.strip('(')} ({name})")

    def test_words_that_only_look_like_them_pass(self):
        self.write("a.md", f"{MESSAGE} special specifics build/wor" + "k/ A-4 Part 9.1 A-0301 UTF-8 " + "$ORIGIN/roo" + "t/ D1 ~/x\n")
        self.assert_clean(TOOL)

    def test_the_quoted_message_may_be_broken_over_two_lines(self):
        self.write("src/a.h", "// It raises " + MESSAGE.replace("argument ", "argument\n// ") + "\n")
        self.assert_clean(TOOL)

    def test_a_file_name_counts(self):
        self.write("docs/" + PAPER + ".txt", "x\n")
        self.assert_finds(TOOL, f"docs/{PAPER}.txt:0:")

    def test_wide_characters_are_found_in_code_only(self):
        self.write("tests/a.cpp", 'auto a = "L"; // wchar_t L"x"\nauto b = "wchar_t"; auto ALL = u"x";\n')
        self.assert_clean(TOOL)
        self.write("tests/a.cpp", "wchar_t a;\nauto b = L\"x\";\nauto c = L'x';\n")
        self.assert_finds(TOOL, "tests/a.cpp:1: wchar_t", 'tests/a.cpp:2: L"', "tests/a.cpp:3: L'")

    def test_allocation_beside_the_host_table_is_found(self):
        found = [
            "std::malloc(1)",
            "::calloc(1, 1)",
            "&realloc",
            "free(p)",
            "std::free(p)",
            "::free(p)",
            "::operator new(5)",
            "new char[5]",
            "new (std::nothrow) float[5]",
            "new std::uint8_t[n]",
            "new unsigned int",
        ]
        for text in found:
            with self.subTest(text):
                self.write("src/a.cpp", f"void F() {{ x = {text}; }}\n")
                self.assert_finds(TOOL, "src/a.cpp:1:")

    def test_our_own_ways_to_allocate_pass(self):
        lines = [
            "void* MObject::operator new(std::size_t size) { return MAllocate(size); }",
            "auto a = new MEnvelope(1); auto b = new (place) float; pool.free(a); pool->free(b); // malloc(",
            "std::vector<float, MAllocator<float>> c; std::map<int, int, std::less<int>, MAllocator<int>> d;",
            "auto e = std::make_unique<MEnvelope>(); std::string_view f; int malloc_count; const char* g = \"free(\";",
            "#include <string>",
        ]
        self.write("src/a.cpp", "\n".join(lines) + "\n")
        self.assert_clean(TOOL)

    def test_standard_containers_of_the_library_need_an_allocator(self):
        found = [
            "std::vector<float> a;",
            "std::vector<std::vector<float, MAllocator<float>>> a;",
            "std::unordered_map<int, int> a;",
            "std::string a;",
            "auto a = std::make_unique<float[]>(5);",
            "auto a = std::make_shared<Foo>();",
        ]
        for text in found:
            with self.subTest(text):
                self.write("hosts/a.cpp", text + "\n")
                self.assert_clean(TOOL)
                self.write("src/a.cpp", text + "\n")
                self.assert_finds(TOOL, "src/a.cpp:1:")
                (self.root / "src/a.cpp").unlink()

    def test_a_row_allows_one_word_in_one_file(self):
        self.write("src/a.cpp", "auto a = std::malloc(5);\n")
        self.write("src/b.cpp", "auto a = std::malloc(5);\n")
        self.write("tools/allowed_words.txt", "# c\nsrc/a.cpp malloc the default table\n")
        self.assert_finds(TOOL, "src/b.cpp:1: malloc (malloc)")

    def test_a_row_that_is_not_needed_is_found(self):
        self.write("tools/allowed_words.txt", "src/a.cpp malloc the default table\n")
        self.assert_finds(TOOL, "tools/allowed_words.txt:1: src/a.cpp has no malloc, remove the row")

    def test_files_that_are_no_text_are_left_alone(self):
        (self.root / "a.bin").write_bytes(b"\0" + PAPER.encode())
        self.assert_clean(TOOL)

    def test_only_files_that_git_tracks_count_in_a_checkout(self):
        self.call("git", "init", "-q", self.root)
        self.write("mine.txt", PAPER)
        self.assert_clean(TOOL)
        self.call("git", "-C", self.root, "add", "mine.txt")
        self.assert_finds(TOOL, "mine.txt:1:")
