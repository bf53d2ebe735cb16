#include "coef/WordFileSource.h"

#include "platform/FileStream.h"

namespace trevolt {

CWordFileSource::CWordFileSource(std::istream& stream)
    : m_stream(&stream), m_start(stream.tellg()) {}

std::istream* CWordFileSource::Open() {
    if (m_stream == nullptr) {
        NoteIfBroken(m_file);
        m_file = std::fstream();
        return OpenFileStream(m_file, m_path, std::ios::in) ? &m_file : nullptr;
    }
    Rewind();
    return m_stream;
}

void CWordFileSource::Rewind() {
    std::istream& stream = Stream();
    NoteIfBroken(stream);
    if (m_start < 0)
        return stream.setstate(std::ios::failbit);
    stream.clear();
    stream.seekg(m_start);
}

} // namespace trevolt
