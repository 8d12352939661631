from tree_case import TreeCase

TOOL = "check_threads.py"
MESSAGE = "is derived from MThread and needs a destructor that calls StopAndJoin()"


class CheckThreads(TreeCase):
    def test_a_destructor_that_joins_passes_in_the_class_and_out_of_it(self):
        self.write("src/core/A.h", "class A final : public MThread {\n public:\n  ~A() override { StopAndJoin(); }\n};\n")
        self.write("src/core/B.h", "class B : public MObject, private core::MThread {\n  ~B() override;\n};\n")
        self.write("src/core/B_posix.cpp", "B::~B() noexcept(false) {\n  if (a) { b(); }\n  StopAndJoin( );\n}\n")
        self.write("src/core/C.h", "template <class T>\nstruct M_VISIBLE C : MThread { ~C() override; };\n"
                   "template <class T>\nC<T>::~C() { wake_.Release(); this->StopAndJoin(); }\n")
        self.assert_clean(TOOL)

    def test_a_class_without_a_destructor_is_found(self):
        self.write("src/core/A.h", "struct Row;\nclass A final : public MThread {\n  uint32_t Run() override;\n};\n")
        self.assert_finds(TOOL, f"src/core/A.h:2: A {MESSAGE}")

    def test_a_destructor_that_does_not_join_is_found(self):
        bodies = ["~A() override = default;", "~A() override {}", "~A() override { /* StopAndJoin() */ Stop(); }", "~A();"]
        for body in bodies:
            with self.subTest(body):
                self.write("src/core/A.h", f"class A : public MThread {{\n  {body}\n  void F() {{ StopAndJoin(); }}\n}};\n")
                self.write("src/core/A.cpp", "void A::G() { StopAndJoin(); }\n")
                self.assert_finds(TOOL, f"src/core/A.h:1: A {MESSAGE}")

    def test_a_class_derived_from_a_thread_needs_a_destructor_of_its_own(self):
        self.write("hosts/cli/B.h", "class B : public A {};\n")
        self.write("src/core/A.h", "class A : public MThread {\n  ~A() { StopAndJoin(); }\n};\n")
        self.assert_finds(TOOL, f"hosts/cli/B.h:1: B {MESSAGE}")

    def test_classes_of_one_name_in_two_others_are_told_apart(self):
        for outer in ("First", "Second"):
            self.write(f"src/core/{outer}.h", f"class {outer} {{\n  class Worker : public MThread {{\n    ~Worker();\n  }};\n}};\n")
        self.write("src/core/First.cpp", "First::Worker::~Worker() {\n  StopAndJoin();\n}\n")
        self.assert_finds(TOOL, f"src/core/Second.h:2: Second::Worker {MESSAGE}")

    def test_a_class_declared_in_one_and_defined_out_of_it_is_known_by_both_names(self):
        self.write("src/core/A.h", "class A {\n  class Worker;\n};\n")
        self.write("src/core/A.cpp", "class A::Worker final : public MThread {\n  ~Worker() { StopAndJoin(); }\n};\n")
        self.assert_clean(TOOL)

    def test_other_classes_need_none(self):
        self.write("src/core/A.h", "enum class MThreadKind : int { kA };\nclass A : public MList<MThread> {};\nclass B { MThread t; };\n")
        self.write("tests/core/T.cpp", "class T : public MThread {};\n")
        self.assert_clean(TOOL)
