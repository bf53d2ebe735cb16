#include "coef/WordFileSource.h"

#include "common/BrokenStream.h"
#include "common/ReadFile.h"

namespace trevolt {

CWordFileSource::CWordFileSource(std::istream& stream)
    : m_stream(&stream), m_start(stream.tellg()) {}

std::istream* CWordFileSource::Open() {
    if (m_stream == nullptr) {
        NoteTrouble();
        if (!OpenRead(m_file.emplace(), m_path))
            m_file.reset();
        return m_file ? &*m_file : nullptr;
    }
    Rewind();
    return m_stream;
}

void CWordFileSource::Rewind() {
    NoteTrouble();
    std::istream& stream = m_stream == nullptr ? *m_file : *m_stream;
    if (m_start < 0)
        return stream.setstate(std::ios::failbit);
    stream.clear();
    stream.seekg(m_start);
}

void CWordFileSource::NoteTrouble() const {
    if (m_stream != nullptr)
        NoteIfBroken(*m_stream);
    else if (m_file)
        NoteIfRefused(*m_file);
}

} // namespace trevolt
