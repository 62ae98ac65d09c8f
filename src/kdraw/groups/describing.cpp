#include "kdraw/groups/describing.hpp"
#include "strings/utf8.hpp"

namespace kdraw {

void groupHandles(Fields& f, int code, std::vector<Handle>& v) {
    if (DxfOutput* out = f.output()) {
        for (const Handle h : v) out->handle(code, h);
        return;
    }
    DxfInput* in = f.input();
    if (in == nullptr) return;
    v.clear();
    for (bool found = in->find(code); found; found = in->seek(code)) {
        v.push_back(in->handle());
        in->skip();
    }
}

void longText(Fields& f, int more, int last, std::string& v) {
    constexpr std::size_t kPiece = 250;
    if (DxfOutput* out = f.output()) {
        std::string_view rest = v;
        while (rest.size() > kPiece) {
            // Neither within a character nor within an inline code's beginning.
            std::size_t cut = kova::strings::wholeCharacters(rest, kPiece);
            for (int back = 0; back < 8 && cut > 200; ++back) {
                const char before = rest[cut - 1];
                if (before != '\\' && before != '^' && before != '%' && before != ' ') break;
                --cut;
            }
            out->text(more, rest.substr(0, cut));
            rest.remove_prefix(cut);
        }
        out->text(last, rest);
        return;
    }
    DxfInput* in = f.input();
    if (in == nullptr) return;
    v.clear();
    if (!in->seek(more) && !in->find(more) && !in->find(last)) return;
    for (; in->peek() == more || in->peek() == last; in->skip()) {
        v += in->decoded();
        if (in->peek() == last) {
            in->skip();
            return;
        }
    }
}

void standardWhenMissing(Fields& f, Table table, Handle& v) {
    if (const DxfInput* in = f.input(); in != nullptr && v == 0) v = in->record(table, "Standard");
}

}  // namespace kdraw
