// SPDX-License-Identifier: MIT
// Writes the seeds of all fuzz targets: a few whole inputs of each kind, from which damaged ones are bred.
#include "effect/program.h"
#include "tests/support/aiff.h"
#include "tests/support/temp_folder.h"

#include <filesystem>

using namespace vocafade;
using namespace test;

namespace {

std::string folder;

void Seed(const std::string& target, const std::string& name, const std::string& bytes) {
    std::filesystem::create_directories(folder + "/" + target);
    test::WriteFile(folder + "/" + target + "/" + name, bytes);
}

void Banks() {
    // All kinds that a host reads; the bank that the effect opens by itself is of those with a chunk.
    const auto seed = [](const char* name, const std::string& bytes) {
        Seed("bank_fuzzer", name, bytes);
        Seed("bank_file_fuzzer", name, bytes);
    };
    const auto header = [](const char* kind, std::uint32_t count) {
        return "CcnK" + Big32(0) + kind + Big32(1) + "VfdQ" + Big32(1) + Big32(count);
    };
    const std::string name(28, 'n'), reserved(128, '\0');
    std::string values = header("FxCk", 6) + name;
    for (int i = 0; i < 6; ++i)
        values += Big32(0x3F000000); // a half
    const ProgramSet programs;
    const std::string bank(reinterpret_cast<const char*>(programs.data()), sizeof programs);
    seed("values", values);
    seed("bank-of-values", header("FxBk", 2) + reserved + values + values);
    seed("header", header("FBCh", 64));
    seed("chunks", header("FBCh", 64) + reserved + Chunk("", bank));
    for (const std::uint32_t size : {52U, 30U})
        seed(("chunk" + std::to_string(size)).c_str(),
             header("FPCh", 6) + name + Chunk("", bank.substr(0, size)));
}

void Lists() {
    const std::string list =
        "KVB5.0 EFFECT PROGRAM LIST\r\n3\r\nHall\r\nA much longer name than fits\nHall\n";
    const std::string file = "KVB5.0 EFFECT PRG FILE\r\n0\t26214400\t589824000\t419430400\t1\r\n";
    const std::string parted("\0\xFF", 2);
    Seed("program_list_fuzzer", "whole", list + parted + file);
    Seed("program_list_fuzzer", "huge",
         "KVB5.0 EFFECT PROGRAM LIST\n2147483647\nHall" + parted + "0\t\t 1\t-5");
    Seed("program_list_fuzzer", "long",
         list + std::string(200, 'x') + parted + file + std::string(600, '\t'));
}

void Sounds() {
    const auto seed = [](const char* name, const std::string& bytes) {
        Seed("user_chunk_fuzzer", name, bytes);
    };
    const std::string common = Common(4), sound = Sound("0123456789abcdef");
    const std::string user = Chunk("WVL4", Chunk("KEY ", "value"));
    const std::string pad(1, '\0');
    seed("plain", "\x11" + Form(common + sound));
    seed("user", "\x05" + Form(common + sound + user) + "stale bytes");
    seed("appended",
         "\x05" + Form(common + sound + user) + "stale" + Chunk("ID3 ", "tags") + Chunk("NAME", "n"));
    seed("between", "\x15" + Form(common + sound + user + pad + Chunk("NAME", "n") + pad));
    seed("odd", "\x40" + Form(common + Chunk("ANNO", "odd") + sound + Chunk("(c) ", "x")));
    seed("padded", "\x41" + Form(Chunk("MARK", "odd") + pad + common + sound + Chunk("ID3 ", "tags")));
    seed("unfinished", "\2FORM" + Big32(46) + "AIFF" + Chunk("COMM", std::string(18, '\0')) + "SSND" +
                           Big32(8) + std::string(40, '\1'));
    seed("wrapped", "\x09" + std::string(Form(common + sound)).replace(42, 4, Big32(0xFFFFFFF0U)));
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) return 2;
    folder = arguments[1];
    Banks();
    Lists();
    Sounds();
    Seed("settings_fuzzer", "whole", "# mine\nroot=r\n[S]\na=1\nb:=%00%FF\nno value\n[T]\r\n[S]\nc=%zz");
    return 0;
}
