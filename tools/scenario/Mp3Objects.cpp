// Objects of the two MP3 classes for `new cIDV3 as NAME` / `new cMP3Info as NAME`: their
// properties and routines by name, with numbers and truth values as text.
#include <algorithm>
#include <cctype>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ScriptObject.h"
#include "mp3/cIDV3.h"
#include "mp3/cMP3Info.h"
#include "runtime/Conversions.h"
#include "runtime/RuntimeError.h"

namespace scenario {

namespace {

// Names are matched without regard to case, as the language of the classes does.
std::string folded(const std::string &name)
{
    std::string s = name;
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

std::string number(double v) { return rt::numberText(v); }
std::string truth(bool b) { return b ? "-1" : "0"; }

// An argument of a routine; a missing one is the platform's "Argument not optional" (449).
const std::string &argument(const std::vector<std::string> &args, size_t i)
{
    if (i >= args.size())
        rt::raise(449);
    return args[i];
}

// A table-driven object: getters, setters and routines by folded name.
class TableObject : public ScriptObject {
public:
    TableObject() = default;
    // The handlers hold `this`.
    TableObject(const TableObject &) = delete;
    TableObject &operator=(const TableObject &) = delete;

    std::optional<std::string> get(const std::string &property) const override
    {
        const auto it = m_getters.find(folded(property));
        if (it == m_getters.end())
            return std::nullopt;
        return it->second();
    }

    bool set(const std::string &property, const std::string &value) override
    {
        const auto it = m_setters.find(folded(property));
        if (it == m_setters.end())
            return false;
        it->second(value);
        return true;
    }

    std::optional<std::string> call(const std::string &routine, const std::vector<std::string> &args) override
    {
        const auto it = m_routines.find(folded(routine));
        if (it == m_routines.end())
            return std::nullopt;
        return it->second(args);
    }

protected:
    void getter(const std::string &name, std::function<std::string()> f) { m_getters[folded(name)] = std::move(f); }
    void setter(const std::string &name, std::function<void(const std::string &)> f)
    {
        m_setters[folded(name)] = std::move(f);
    }
    void routine(const std::string &name, std::function<std::string(const std::vector<std::string> &)> f)
    {
        m_routines[folded(name)] = std::move(f);
    }

private:
    std::map<std::string, std::function<std::string()>> m_getters;
    std::map<std::string, std::function<void(const std::string &)>> m_setters;
    std::map<std::string, std::function<std::string(const std::vector<std::string> &)>> m_routines;
};

class IDV3Object : public TableObject {
public:
    IDV3Object()
    {
        getter("FileName", [this] { return m_obj.FileName(); });
        setter("FileName", [this](const std::string &v) { m_obj.setFileName(v); });
        getter("Title", [this] { return m_obj.Title(); });
        setter("Title", [this](const std::string &v) { m_obj.setTitle(v); });
        getter("Artist", [this] { return m_obj.Artist(); });
        setter("Artist", [this](const std::string &v) { m_obj.setArtist(v); });
        getter("Album", [this] { return m_obj.Album(); });
        setter("Album", [this](const std::string &v) { m_obj.setAlbum(v); });
        getter("Year", [this] { return m_obj.Year(); });
        setter("Year", [this](const std::string &v) { m_obj.setYear(v); });
        getter("Comments", [this] { return m_obj.Comments(); });
        setter("Comments", [this](const std::string &v) { m_obj.setComments(v); });
        getter("Genre", [this] { return number(m_obj.Genre()); });
        setter("Genre", [this](const std::string &v) { m_obj.setGenre(rt::CLng(v).value()); });
        getter("FileBytes", [this] { return number(m_obj.FileBytes().value()); });
        getter("Seconds", [this] { return number(m_obj.Seconds().value()); });
        getter("MpegVersion", [this] { return number(m_obj.MpegVersion().value()); });
        getter("LayerVersion", [this] { return number(m_obj.LayerVersion().value()); });
        getter("Kbits", [this] { return number(m_obj.Kbits().value()); });
        getter("Frames", [this] { return number(m_obj.Frames().value()); });
        getter("Hz", [this] { return number(m_obj.Hz().value()); });
        getter("Mode", [this] { return m_obj.Mode(); });
        getter("PrivateBit", [this] { return m_obj.PrivateBit(); });
        getter("CRCs", [this] { return m_obj.CRCs(); });
        getter("Copyrighted", [this] { return m_obj.Copyrighted(); });
        getter("Original", [this] { return m_obj.Original(); });
        getter("Emphasis", [this] { return m_obj.Emphasis(); });
        getter("Channels", [this] { return number(m_obj.Channels().value()); });
        getter("InfoString", [this] { return m_obj.InfoString(); });
        routine("HasTag", [this](const std::vector<std::string> &) { return truth(m_obj.HasTag()); });
        routine("WriteTag", [this](const std::vector<std::string> &) { return truth(m_obj.WriteTag()); });
        routine("ClearTag", [this](const std::vector<std::string> &) { return truth(m_obj.ClearTag()); });
        routine("GenreText", [](const std::vector<std::string> &args) {
            return mp3::cIDV3::GenreText(rt::CInt(argument(args, 0)));
        });
    }

private:
    mp3::cIDV3 m_obj;
};

class MP3InfoObject : public TableObject {
public:
    MP3InfoObject()
    {
        getter("FileName", [this] { return m_obj.FileName(); });
        setter("FileName", [this](const std::string &v) { m_obj.setFileName(v); });
        getter("Title", [this] { return m_obj.Title(); });
        setter("Title", [this](const std::string &v) { m_obj.setTitle(v); });
        getter("Artist", [this] { return m_obj.Artist(); });
        setter("Artist", [this](const std::string &v) { m_obj.setArtist(v); });
        getter("Genre", [this] { return number(m_obj.Genre().value()); });
        setter("Genre", [this](const std::string &v) { m_obj.setGenre(rt::CLng(v)); });
        getter("Album", [this] { return m_obj.Album(); });
        setter("Album", [this](const std::string &v) { m_obj.setAlbum(v); });
        getter("Year", [this] { return m_obj.Year(); });
        setter("Year", [this](const std::string &v) { m_obj.setYear(v); });
        getter("Comment", [this] { return m_obj.Comment(); });
        setter("Comment", [this](const std::string &v) { m_obj.setComment(v); });
        // Its result is an empty variant.
        routine("pWriteId3Tag", [this](const std::vector<std::string> &) {
            m_obj.pWriteId3Tag();
            return std::string();
        });
        routine("pGetGenre", [this](const std::vector<std::string> &args) {
            return m_obj.pGetGenre(rt::CLng(argument(args, 0)));
        });
    }

private:
    mp3::cMP3Info m_obj;
};

} // namespace

std::unique_ptr<ScriptObject> makeScriptObject(const std::string &className)
{
    const std::string name = folded(className);
    if (name == "cidv3")
        return std::make_unique<IDV3Object>();
    if (name == "cmp3info")
        return std::make_unique<MP3InfoObject>();
    return nullptr;
}

} // namespace scenario
