// The dialog's window in memory: it keeps what controls hold and records every call in order.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "app/DialogView.h"

namespace trevolt::test {

class CMemoryView : public CDialogView {
  public:
    struct Control {
        std::wstring text;
        bool enabled = true;
        bool shown = true;
    };
    struct Message {
        std::wstring text;
        std::uint32_t style = 0;
        friend bool operator==(const Message&, const Message&) = default;
    };

    std::wstring GetText(int id) const override { return At(id).text; }
    void SetText(int id, const std::wstring& text) override {
        m_controls[id].text = text;
        Record(L"text", id, text);
    }
    void Enable(int id, bool enabled) override {
        m_controls[id].enabled = enabled;
        Record(L"enable", id, enabled ? L"1" : L"0");
    }
    void Show(int id, bool shown) override {
        m_controls[id].shown = shown;
        Record(L"show", id, shown ? L"1" : L"0");
    }
    std::int32_t SelectedData(int) const override { return m_angleCode; }
    std::wstring SelectedText(int) const override { return m_angleText; }
    void SetProgress(int id, int position) override {
        m_positions.push_back(position);
        Record(L"progress", id, std::to_wstring(position));
    }
    void ShowMessage(const std::wstring& text, std::uint32_t style) override {
        m_messages.push_back({text, style});
        Record(L"message", static_cast<int>(style), text);
    }

    /// The angle box's selection; code −1 and no text when nothing is selected.
    void SelectAngle(std::int32_t code, const std::wstring& text) {
        m_angleCode = code;
        m_angleText = text;
    }

    const Control& At(int id) const {
        static const Control untouched;
        const auto found = m_controls.find(id);
        return found == m_controls.end() ? untouched : found->second;
    }
    const std::vector<int>& Positions() const { return m_positions; }
    const std::vector<Message>& Messages() const { return m_messages; }
    /// Every call so far, "what id value".
    const std::vector<std::wstring>& Calls() const { return m_calls; }
    void Forget() {
        m_calls.clear();
        m_positions.clear();
        m_messages.clear();
    }

  private:
    void Record(const wchar_t* what, int id, const std::wstring& value) {
        m_calls.push_back(std::wstring(what) + L" " + std::to_wstring(id) + L" " + value);
    }

    std::map<int, Control> m_controls;
    std::vector<int> m_positions;
    std::vector<Message> m_messages;
    std::vector<std::wstring> m_calls;
    std::int32_t m_angleCode = -1;
    std::wstring m_angleText;
};

} // namespace trevolt::test
