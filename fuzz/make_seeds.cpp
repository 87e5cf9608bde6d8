// SPDX-License-Identifier: MIT
// Writes the seeds of all fuzz targets: a few whole inputs of each kind, from which damaged ones are bred.
#include "effect/avocafade.h"
#include "fuzz/support.h"
#include "persistence/default_bank.h"
#include "tests/support/aiff.h"

#include <filesystem>
#include <span>

using namespace vocafade;
using test::Big32, test::Chunk, test::Form;

namespace {

std::string folder;

void Seed(const std::string& target, const std::string& name, const std::string& bytes) {
    std::filesystem::create_directories(folder + "/" + target);
    fuzz::WriteFile(folder + "/" + target + "/" + name, bytes);
}

void Banks() {
    const ProgramSet programs;
    const std::span<const std::byte> chunk = std::as_bytes(std::span(programs));
    const std::string path = folder + "/bank_fuzzer/default";
    std::filesystem::create_directories(folder + "/bank_fuzzer");
    fuzz::Require(WriteChunkBank(path, kVocafadeId, kProgramCount, chunk), "writing a bank");
    const std::string bank = "CcnK" + Big32(0) + "FBCh" + Big32(1) + "VfdQ" + Big32(1) + Big32(64);
    Seed("bank_fuzzer", "header", bank);
    Seed("bank_fuzzer", "programs", "CcnK" + Big32(0) + "FxBk" + Big32(1) + "VfdQ");
    std::string program =
        "CcnK" + Big32(0) + "FxCk" + Big32(1) + "VfdQ" + Big32(1) + Big32(6) + std::string(28, 'n');
    for (int i = 0; i < 6; ++i)
        program += Big32(0x3F000000); // a half
    const std::string bytes(reinterpret_cast<const char*>(chunk.data()), chunk.size());
    Seed("bank_file_fuzzer", "values", program);
    Seed("bank_file_fuzzer", "bank-of-values",
         "CcnK" + Big32(0) + "FxBk" + Big32(1) + "VfdQ" + Big32(1) + Big32(2) + std::string(128, '\0') +
             program + program);
    Seed("bank_file_fuzzer", "chunks",
         bank + std::string(128, '\0') + Big32(static_cast<std::uint32_t>(bytes.size())) + bytes);
    Seed("bank_file_fuzzer", "chunk",
         "CcnK" + Big32(0) + "FPCh" + Big32(1) + "VfdQ" + Big32(1) + Big32(6) + std::string(28, 'n') +
             Big32(52) + bytes.substr(0, 52));
    Seed("host_chunk_fuzzer", "bank", std::string(1, '\0') + bytes);
    Seed("host_chunk_fuzzer", "program", "\7" + bytes.substr(0, 52));
    Seed("host_chunk_fuzzer", "short", "\7" + bytes.substr(0, 30));
}

void Lists() {
    const auto seed = [](const char* name, const std::string& bytes) {
        Seed("program_list_fuzzer", name, bytes);
    };
    const std::string list =
        "KVB5.0 EFFECT PROGRAM LIST\r\n3\r\nHall\r\nA much longer name than fits\nHall\n";
    const std::string file = "KVB5.0 EFFECT PRG FILE\r\n0\t26214400\t589824000\t419430400\t1\r\n";
    const std::string parted("\0\xFF", 2);
    seed("whole", list + parted + file);
    seed("huge", "KVB5.0 EFFECT PROGRAM LIST\n2147483647\nHall" + parted + "0\t\t 1\t-5");
    seed("long", list + std::string(200, 'x') + parted + file + std::string(600, '\t'));
}

void Sounds() {
    const auto seed = [](const char* name, const std::string& bytes) {
        Seed("user_chunk_fuzzer", name, bytes);
    };
    const std::string common =
        Chunk("COMM", std::string("\0\2\0\0\0\4\0\x10\x40\x0E\xAC\x44\0\0\0\0\0\0", 18));
    const std::string sound = Chunk("SSND", std::string(8, '\0') + "0123456789abcdef");
    const std::string user = Chunk("WVL4", Chunk("KEY ", "value"));
    const std::string pad(1, '\0');
    seed("plain", "\x11" + Form(common + sound));
    seed("user", "\x05" + Form(common + sound + user) + "stale bytes");
    seed("appended",
         "\x05" + Form(common + sound + user) + "stale" + Chunk("ID3 ", "tags") + Chunk("NAME", "n"));
    seed("between", "\x15" + Form(common + sound + user + pad + Chunk("NAME", "n") + pad));
    seed("odd", "\x40" + Form(common + Chunk("ANNO", "odd") + sound + Chunk("(c) ", "x")));
    seed("padded", "\x41" + Form(Chunk("MARK", "odd") + pad + common + sound + Chunk("ID3 ", "tags")));
    seed("unfinished", "\x02"
                       "FORM" +
                           Big32(46) + "AIFF" + Chunk("COMM", std::string(18, '\0')) + "SSND" + Big32(8) +
                           std::string(40, '\1'));
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
