#include "kdraw/database/record_codec.hpp"

#include <algorithm>

#include "kdraw/container/checksums.hpp"
#include "kdraw/database/database.hpp"
#include "kdraw/database/extended_data.hpp"

namespace kdraw {

namespace {

constexpr std::uint16_t kFirstClass = 500;
constexpr std::uint16_t kEntityClass = 0x1F2;

/// What all objects have behind the extended data.
void describePreamble(Fields& f, Object& object) {
    std::size_t reactors = f.count(Width::BL, 0, object.reactors.size(), 8);
    bool missing = object.dictionary == 0;
    if (f.since(Version::R2004)) f.b(0, missing);
    if (f.since(Version::R2013)) f.b(0, object.hasBinaryData);
    f.handle(Ref::SoftPointer, 0, object.owner);
    f.restOfHandles(Ref::SoftPointer, 0, object.reactors, reactors);
    if (f.before(Version::R2004) || !missing) f.handle(Ref::HardOwner, 0, object.dictionary);
}

/// Colour, true colour and transparency of an entity.
void describeEntityColor(Fields& f, Entity& e) {
    if (f.before(Version::R2004)) {
        f.bs(0, e.colorIndex);
        return;
    }
    constexpr std::uint16_t kTrue = 0x8000, kBook = 0x4000, kTransparent = 0x2000;
    std::uint16_t packed = e.colorIndex & 0x1FF;
    if (e.trueColor != 0) packed = static_cast<std::uint16_t>((packed == 256 ? 0 : packed) | kTrue);
    if (e.transparency != 0) packed |= kTransparent;
    f.bs(0, packed);
    if ((packed & kTrue) != 0 && (packed & kBook) == 0) f.bl(0, e.trueColor);
    if ((packed & kTransparent) != 0) f.bl(0, e.transparency);
    if (f.reading()) {
        e.colorIndex = packed & 0x1FF;
        e.bookColor = (packed & kBook) != 0 ? 1 : 0;  // its handle follows
    }
}

}  // namespace

void describeEntityCommon(Fields& f, Entity& e) {
    f.bb(0, e.mode);
    const std::size_t reactors = f.count(Width::BL, 0, e.reactors.size(), 8);
    bool missing = e.dictionary == 0;
    if (f.since(Version::R2004)) f.b(0, missing);
    if (f.before(Version::R2004)) f.b(0, e.noLinks);
    if (f.since(Version::R2013)) f.b(0, e.hasBinaryData);
    describeEntityColor(f, e);
    f.bd(0, e.linetypeScale);
    f.bb(0, e.linetypeFlags);
    if (f.since(Version::R2007)) {
        f.bb(0, e.materialFlags);
        f.rc(0, e.shadowFlags);
    }
    f.bb(0, e.plotStyleFlags);
    if (f.since(Version::R2010)) {
        f.b(0, e.fullVisualStyle);
        f.b(0, e.faceVisualStyle);
        f.b(0, e.edgeVisualStyle);
    }
    f.bs(0, e.invisible);
    f.rc(0, e.lineweight);

    if (e.mode == 0) f.handle(Ref::SoftPointer, 0, e.owner);
    f.restOfHandles(Ref::SoftPointer, 0, e.reactors, reactors);
    if (f.before(Version::R2004) || !missing) f.handle(Ref::HardOwner, 0, e.dictionary);
    if (f.before(Version::R2004)) {
        if (!e.noLinks) {
            f.handle(Ref::SoftPointer, 0, e.previous);
            f.handle(Ref::SoftPointer, 0, e.next);
        } else if (f.reading()) {
            e.previous = e.handle - 1;
            e.next = e.handle + 1;
        }
    }
    if (f.since(Version::R2004) && e.bookColor != 0) f.handle(Ref::HardPointer, 0, e.bookColor);
    f.handle(Ref::HardPointer, 0, e.layer);
    if (e.linetypeFlags == 3) f.handle(Ref::HardPointer, 0, e.linetype);
    if (f.since(Version::R2007) && e.materialFlags == 3) f.handle(Ref::HardPointer, 0, e.material);
    if (e.plotStyleFlags == 3) f.handle(Ref::HardPointer, 0, e.plotStyle);
    if (f.since(Version::R2010)) {
        if (e.fullVisualStyle) f.handle(Ref::HardPointer, 0, e.visualStyles[0]);
        if (e.faceVisualStyle) f.handle(Ref::HardPointer, 0, e.visualStyles[1]);
        if (e.edgeVisualStyle) f.handle(Ref::HardPointer, 0, e.visualStyles[2]);
    }
}

namespace {

/// The picture that some classes carry; false: damage.
bool skipGraphics(BitDecoder& f) {
    if (!f.data.b()) return true;
    const std::uint64_t size = f.since(Version::R2010) ? f.data.bll() : f.data.rl();
    if (size > f.data.left() / 8) return false;
    f.data.seek(f.data.position() + static_cast<std::size_t>(size) * 8);
    return true;
}

}  // namespace

const ObjectKind* kindNamed(std::string_view name) {
    static const std::unordered_map<std::string_view, const ObjectKind*> kinds = [] {
        std::unordered_map<std::string_view, const ObjectKind*> map;
        for (const auto list : {entityKinds(), objectKinds()})
            for (const ObjectKind& kind : list) map.emplace(kind.dxfName, &kind);
        // Names that other releases give the same classes.
        for (const auto& [other, usual] : {std::pair<std::string_view, std::string_view>{"MLEADER", "MULTILEADER"},
                                           {"TABLE", "ACAD_TABLE"},
                                           {"PDFREFERENCE", "PDFUNDERLAY"}}) {
            const auto found = map.find(usual);
            if (found != map.end()) map.emplace(other, found->second);
        }
        return map;
    }();
    const auto found = kinds.find(name);
    return found == kinds.end() ? nullptr : found->second;
}

RecordDecoder::RecordDecoder(const Database& database, const TextCodec& codec) : database_(database), codec_(codec) {
    fixed_.resize(kFirstClass);
    for (const auto list : {entityKinds(), objectKinds()})
        for (const ObjectKind& kind : list)
            if (kind.type != 0 && kind.type < kFirstClass && fixed_[kind.type] == nullptr) fixed_[kind.type] = &kind;
    for (const ClassRecord& record : database.classes) {
        if (record.number < kFirstClass) continue;
        const auto place = static_cast<std::size_t>(record.number - kFirstClass);
        if (place >= byClass_.size()) byClass_.resize(place + 1);
        byClass_[place] = kindNamed(record.dxfName);
    }
}

const ObjectKind* RecordDecoder::kindOf(std::uint16_t type, bool& entity, const char*& className) const {
    if (type < kFirstClass) {
        const ObjectKind* kind = fixed_[type];
        if (kind != nullptr) entity = kind->entity;
        return kind;
    }
    const std::size_t place = type - kFirstClass;
    const ObjectKind* kind = place < byClass_.size() ? byClass_[place] : nullptr;
    for (const ClassRecord& record : database_.classes)
        if (kind == nullptr && record.number == type) {
            entity = record.itemClass == kEntityClass;
            className = record.dxfName.c_str();
        }
    if (kind != nullptr) entity = kind->entity;
    return kind;
}

RecordDecoder::Result RecordDecoder::decode(std::string_view section, std::uint64_t offset, Handle handle) const {
    Result result;
    if (offset >= section.size()) return result;
    // The handle part's size in front of R2010 records is not counted by the record's own.
    BitReader head(section.substr(offset, 32));
    const std::uint64_t size = head.ms();
    const std::uint64_t handleBits = database_.version >= Version::R2010 ? head.umc() : 0;
    const std::size_t headBytes = head.position() / 8;
    if (head.failed() || size == 0 || size > section.size() - offset || headBytes > section.size() - offset - size)
        return result;
    result.size = size;
    const std::string_view record = section.substr(offset, headBytes + static_cast<std::size_t>(size));
    if (record.size() + 2 <= section.size() - offset) {
        const auto* crc = reinterpret_cast<const unsigned char*>(record.data() + record.size());
        result.wrongChecksum = crc16(crcSeed, record) != (crc[0] | crc[1] << 8);
    }

    const std::size_t begin = headBytes * 8;
    const std::size_t end = record.size() * 8;
    BitReader reader(record, begin, end);
    std::size_t handleStart = 0;
    if (database_.version >= Version::R2010) {
        result.type = reader.ot();
        if (handleBits > end - begin) return result;
        handleStart = end - static_cast<std::size_t>(handleBits);
    } else {
        result.type = static_cast<std::uint16_t>(reader.bs());
        const std::uint32_t bits = reader.rl();
        if (bits > end - begin) return result;
        handleStart = begin + bits;
    }
    BitDecoder f(database_.version, codec_);
    f.partStreams(record, begin, handleStart, end);
    f.data.seek(reader.position());
    const Handle own = f.data.handle(0);
    if (f.damaged() || own != handle) return result;
    f.own = own;

    const char* className = "";
    const ObjectKind* kind = kindOf(result.type, result.entity, className);
    std::unique_ptr<Object> object;
    if (kind != nullptr) {
        object = kind->make();
    } else if (result.entity) {
        auto opaque = std::make_unique<OpaqueEntity>();
        opaque->className = className;
        opaque->record = record;
        object = std::move(opaque);
    } else {
        auto opaque = std::make_unique<OpaqueObject>();
        opaque->className = className;
        opaque->record = record;
        object = std::move(opaque);
    }
    object->type = result.type;
    object->handle = own;
    decodeExtendedData(f, codec_, object->xdata);
    if (object->isEntity()) {
        if (!skipGraphics(f)) return result;
        describeEntityCommon(f, static_cast<Entity&>(*object));
    } else {
        describePreamble(f, *object);
    }
    if (kind != nullptr) {
        object->describe(f);
        result.uneven = f.data.left() != 0;
    }
    if (f.damaged()) return result;
    result.object = std::move(object);
    return result;
}

void RecordEncoder::encode(Object& object, std::string& section) {
    fields_.clear();
    if (version_ >= Version::R2010)
        fields_.data.ot(object.type);
    else
        fields_.data.bs(object.type);
    fields_.data.handle(0, object.handle);
    encodeExtendedData(fields_.data, object.xdata);
    if (object.isEntity()) {
        fields_.data.b(false);
        auto& entity = static_cast<Entity&>(object);
        if (version_ < Version::R2013) entity.hasBinaryData = false;
        describeEntityCommon(fields_, entity);
    } else {
        describePreamble(fields_, object);
    }
    object.describe(fields_);
    fields_.joinStrings();
    const std::size_t handleStart = fields_.data.size();
    fields_.data.append(fields_.handlesPart);
    fields_.data.align();
    const std::string& body = fields_.data.view();
    frame_.clear();
    frame_.ms(body.size());
    frame_.umc(body.size() * 8 - handleStart);
    const std::size_t begin = section.size();
    section += frame_.view();
    section += body;
    const std::uint16_t crc = crc16(crcSeed, std::string_view(section).substr(begin));
    section += static_cast<char>(crc & 0xFF);
    section += static_cast<char>(crc >> 8);
}

}  // namespace kdraw
