// Files and the surroundings of the program.

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <system_error>

#include "io/text_file.hpp"
#include "strings/wildcards.hpp"
#include "engine/sysvars/host.hpp"
#include "script/lisp/function_table.hpp"
#include "script/lisp/files.hpp"
#include "strings/utf8.hpp"

namespace kova::script::lisp {

namespace fs = std::filesystem;

std::optional<std::string> findProgramFile(const Machine& machine, const std::string& name, bool program) {
    std::vector<fs::path> folders{{}};
    const std::string& drawing = machine.drawing().fileName;
    if (!drawing.empty()) folders.push_back(fs::path(drawing).parent_path());
    for (const std::string& folder : machine.host().searchFolders()) folders.emplace_back(folder);
    std::error_code error;
    if (name.empty() || name.find('\0') != std::string::npos) return {};
    for (const fs::path& folder : folders) {
        const fs::path path = folder.empty() ? fs::path(name) : folder / name;
        if (fs::is_regular_file(path, error)) return path.string();
        if (program && !path.has_extension() && fs::is_regular_file(path.string() + ".lsp", error))
            return path.string() + ".lsp";
    }
    return {};
}

namespace {

FileObject* openFile(const char* function, const Value& v) {
    FileObject* file = fileArgument(function, v);
    if (file->file == nullptr) throw LispError(std::string(function) + ": the file is closed");
    return file;
}

/// A file opened for reading, or one with its text as UTF-8 when it is in another encoding. Takes the file.
std::FILE* asUtf8(std::FILE* file, const std::string& path, const engine::Drawing& drawing) {
    constexpr std::size_t kMaxBytes = std::size_t{256} << 20;
    std::error_code error;
    if (!fs::is_regular_file(path, error) || fs::file_size(path, error) > kMaxBytes || error) return file;
    std::string bytes;
    char piece[65536];
    for (std::size_t n = 0; bytes.size() <= kMaxBytes && (n = std::fread(piece, 1, sizeof piece, file)) > 0;)
        bytes.append(piece, n);
    std::rewind(file);
    if (strings::isUtf8(bytes) && !bytes.starts_with("\xEF\xBB\xBF")) return file;
    std::FILE* decoded = std::tmpfile();
    if (decoded == nullptr) return file;
    const std::string text = cmd::decodedText(bytes, cmd::codePageOf(drawing));
    std::fwrite(text.data(), 1, text.size(), decoded);
    std::rewind(decoded);
    std::fclose(file);
    return decoded;
}

Value open(Machine& m, Value* v, int) {
    const std::string& path = stringArgument("OPEN", v[0]);
    const std::string mode = engine::foldCase(stringArgument("OPEN", v[1]));
    if (mode != "r" && mode != "w" && mode != "a") badArgument("OPEN", "the mode \"r\", \"w\" or \"a\"", v[1]);
    std::error_code error;
    if (fs::is_directory(path, error)) return {};
    std::FILE* file = std::fopen(path.c_str(), (mode + "b").c_str());
    if (file == nullptr) return {};
    if (mode == "r") file = asUtf8(file, path, m.drawing());
    Heap::charge(sizeof(FileObject));
    return Value::object(new FileObject(file, path));
}

Value close(Machine&, Value* v, int) {
    fileArgument("CLOSE", v[0])->close();
    return {};
}

Value readLine(Machine&, Value* v, int) {
    FileObject* file = openFile("READ-LINE", v[0]);
    std::string line;
    int c = std::fgetc(file->file);
    if (c == EOF) return {};
    for (; c != EOF && c != '\n'; c = std::fgetc(file->file)) {
        line += static_cast<char>(c);
        if (line.size() > (std::size_t{64} << 20)) throw LispError("READ-LINE: the line is too long");
    }
    if (line.ends_with('\r')) line.pop_back();
    return Value::string(std::move(line));
}

Value readChar(Machine&, Value* v, int) {
    const int c = std::fgetc(openFile("READ-CHAR", v[0])->file);
    return c == EOF ? Value() : Value::integer(c);
}

Value writeLine(Machine& m, Value* v, int n) {
    const std::string& text = stringArgument("WRITE-LINE", v[0]);
    if (n > 1 && v[1].isTrue()) {
        std::FILE* file = openFile("WRITE-LINE", v[1])->file;
        std::fwrite(text.data(), 1, text.size(), file);
        std::fputc('\n', file);
    } else {
        m.print(text);
        m.print("\n");
    }
    return v[0];
}

Value writeChar(Machine& m, Value* v, int n) {
    const auto c = static_cast<char>(integerArgument("WRITE-CHAR", v[0]) & 0xFF);
    if (n > 1 && v[1].isTrue())
        std::fputc(c, openFile("WRITE-CHAR", v[1])->file);
    else
        m.print(std::string_view(&c, 1));
    return v[0];
}

Value findFile(Machine& m, Value* v, int) {
    const auto path = findProgramFile(m, stringArgument("FINDFILE", v[0]), false);
    if (!path) return {};
    std::error_code error;
    const fs::path full = fs::absolute(*path, error);
    return Value::string(error ? *path : full.lexically_normal().string());
}

Value getFileDialog(Machine&, Value*, int) {
    throw LispError("GETFILED needs its dialog, which kovacad-cli cannot show");
}

Value getEnvironment(Machine&, Value* v, int) {
    const char* value = std::getenv(stringArgument("GETENV", v[0]).c_str());
    return value != nullptr ? Value::string(value) : Value();
}

Value setEnvironment(Machine&, Value* v, int) {
    const std::string& name = stringArgument("SETENV", v[0]);
    const std::string& value = stringArgument("SETENV", v[1]);
    if (name.empty() || ::setenv(name.c_str(), value.c_str(), 1) != 0) return {};
    return v[1];
}

Value fileName(Machine&, Value* v, int n) {
    (void)n;
    return Value::string(fs::path(stringArgument("VL-FILENAME-BASE", v[0])).stem().string());
}

Value fileExtension(Machine&, Value* v, int) {
    const std::string extension = fs::path(stringArgument("VL-FILENAME-EXTENSION", v[0])).extension().string();
    return extension.empty() ? Value() : Value::string(extension);
}

Value fileFolder(Machine&, Value* v, int) {
    return Value::string(fs::path(stringArgument("VL-FILENAME-DIRECTORY", v[0])).parent_path().string());
}

Value fileDelete(Machine& m, Value* v, int) {
    const std::string& path = stringArgument("VL-FILE-DELETE", v[0]);
    std::error_code error;
    return boolean(m, fs::is_regular_file(path, error) && fs::remove(path, error));
}

Value fileRename(Machine& m, Value* v, int) {
    const std::string& from = stringArgument("VL-FILE-RENAME", v[0]);
    const std::string& to = stringArgument("VL-FILE-RENAME", v[1]);
    std::error_code error;
    if (!fs::exists(from, error) || fs::exists(to, error)) return {};
    fs::rename(from, to, error);
    return boolean(m, !error);
}

Value fileCopy(Machine& m, Value* v, int) {
    const std::string& from = stringArgument("VL-FILE-COPY", v[0]);
    const std::string& to = stringArgument("VL-FILE-COPY", v[1]);
    std::error_code error;
    return boolean(m, fs::is_regular_file(from, error) && fs::copy_file(from, to, error));
}

Value fileSize(Machine&, Value* v, int) {
    std::error_code error;
    const auto size = fs::file_size(stringArgument("VL-FILE-SIZE", v[0]), error);
    return error ? Value() : Value::integer(static_cast<std::int64_t>(size));
}

Value fileIsFolder(Machine& m, Value* v, int) {
    std::error_code error;
    return boolean(m, fs::is_directory(stringArgument("VL-FILE-DIRECTORY-P", v[0]), error));
}

Value makeFolder(Machine& m, Value* v, int) {
    std::error_code error;
    return boolean(m, fs::create_directory(stringArgument("VL-MKDIR", v[0]), error));
}

Value temporaryName(Machine&, Value* v, int n) {
    static int counter = 0;
    const fs::path pattern =
        n > 0 && v[0].isTrue() ? fs::path(stringArgument("VL-FILENAME-MKTEMP", v[0])) : fs::path("kova");
    fs::path folder =
        n > 1 && v[1].isTrue() ? fs::path(stringArgument("VL-FILENAME-MKTEMP", v[1])) : pattern.parent_path();
    if (folder.empty()) folder = engine::temporaryFolder();
    std::string extension =
        n > 2 && v[2].isTrue() ? stringArgument("VL-FILENAME-MKTEMP", v[2]) : pattern.extension().string();
    for (;;) {
        const fs::path path = folder / (pattern.stem().string() + std::to_string(std::time(nullptr) % 100000) + "-" +
                                        std::to_string(++counter) + extension);
        std::error_code error;
        if (!fs::exists(path, error)) return Value::string(path.string());
    }
}

Value folderFiles(Machine&, Value* v, int n) {
    const std::string folder = n > 0 && v[0].isTrue() ? stringArgument("VL-DIRECTORY-FILES", v[0]) : ".";
    std::string pattern = n > 1 && v[1].isTrue() ? stringArgument("VL-DIRECTORY-FILES", v[1]) : "*";
    const std::int64_t kind = n > 2 && v[2].isTrue() ? integerArgument("VL-DIRECTORY-FILES", v[2]) : 0;
    if (pattern == "*.*") pattern = "*";
    // In file patterns only * and ? mean something.
    std::string escaped;
    for (const char c : pattern) {
        if (c != '*' && c != '?' && cmd::hasWildcards(std::string_view(&c, 1))) escaped += '`';
        escaped += c;
    }
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        const bool isFolder = it->is_directory(error);
        if ((kind < 0 && !isFolder) || (kind > 0 && isFolder)) continue;
        std::string name = it->path().filename().string();
        if (cmd::matchesWildcards(name, escaped)) names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end());
    ListBuilder out;
    for (std::string& name : names) out.add(Value::string(std::move(name)));
    return out.finish();
}

}  // namespace

std::span<const BuiltinDef> fileBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"OPEN", 2, 2, open, "path mode",
         "Opens a text file to read (\"r\"), write (\"w\") or append (\"a\"); nil on failure. What is no UTF-8 is read in "
         "the code page that DWGCODEPAGE names.",
         "(setq f (open \"report.txt\" \"w\"))"},
        {"CLOSE", 1, 1, close, "file", "Closes a file.", "(close f)"},
        {"READ-LINE", 1, 1, readLine, "file", "The next line; nil at the end.", "(read-line f)"},
        {"READ-CHAR", 1, 1, readChar, "file", "The next byte; nil at the end.", "(read-char f)"},
        {"WRITE-LINE", 1, 2, writeLine, "string [file]", "Writes a line.", "(write-line \"text\") -> \"text\""},
        {"WRITE-CHAR", 1, 2, writeChar, "code [file]", "Writes a byte.", "(write-char 65) -> 65"},
        {"FINDFILE", 1, 1, findFile, "name",
         "The full path of a file that stands in the working folder, beside the drawing or in a folder of the program.",
         "(findfile \"nowhere.lsp\") -> nil"},
        {"GETFILED", 0, kAny, getFileDialog, "title name extension flags", "Refused: it is a dialog.",
         "(vl-catch-all-error-p (vl-catch-all-apply 'getfiled '(\"\" \"\" \"lsp\" 0))) -> T"},
        {"GETENV", 1, 1, getEnvironment, "name", "An environment variable; nil when it is not set.",
         "(getenv \"HOME\")"},
        {"SETENV", 2, 2, setEnvironment, "name value", "Sets an environment variable of this program.",
         "(setenv \"KOVA_X\" \"1\") -> \"1\""},
        {"VL-FILENAME-BASE", 1, 1, fileName, "path", "The name without folder and extension.",
         "(vl-filename-base \"/a/b.lsp\") -> \"b\""},
        {"VL-FILENAME-EXTENSION", 1, 1, fileExtension, "path", "The extension with its dot; nil without one.",
         "(vl-filename-extension \"/a/b.lsp\") -> \".lsp\""},
        {"VL-FILENAME-DIRECTORY", 1, 1, fileFolder, "path", "The folder.",
         "(vl-filename-directory \"/a/b.lsp\") -> \"/a\""},
        {"VL-FILENAME-MKTEMP", 0, 3, temporaryName, "[pattern [folder [extension]]]", "A path that no file has yet.",
         "(vl-filename-mktemp \"list.txt\")"},
        {"VL-FILE-DELETE", 1, 1, fileDelete, "path", "Deletes a file; nil on failure.",
         "(vl-file-delete \"nowhere\") -> nil"},
        {"VL-FILE-RENAME", 2, 2, fileRename, "from to", "Renames a file; nil on failure.",
         "(vl-file-rename \"nowhere\" \"here\") -> nil"},
        {"VL-FILE-COPY", 2, 2, fileCopy, "from to", "Copies a file; nil on failure.",
         "(vl-file-copy \"nowhere\" \"here\") -> nil"},
        {"VL-FILE-SIZE", 1, 1, fileSize, "path", "The size in bytes; nil when there is no such file.",
         "(vl-file-size \"nowhere\") -> nil"},
        {"VL-FILE-DIRECTORY-P", 1, 1, fileIsFolder, "path", "T for a folder.", "(vl-file-directory-p \"/\") -> T"},
        {"VL-MKDIR", 1, 1, makeFolder, "path", "Makes a folder; nil on failure.", "(vl-mkdir \"/\") -> nil"},
        {"VL-DIRECTORY-FILES", 0, 3, folderFiles, "[folder [pattern [kind]]]",
         "Names in a folder: all for kind 0, files for 1, folders for -1.", "(vl-directory-files \".\" \"*.lsp\" 1)"},
    };
    return rows;
}

}  // namespace kova::script::lisp
