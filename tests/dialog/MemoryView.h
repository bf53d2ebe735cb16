// The dialog's window in memory: it keeps what controls hold and records every call in order.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "app/dialog/DialogView.h"

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

    struct Entry {
        std::wstring text;
        std::int32_t data = 0;
        friend bool operator==(const Entry&, const Entry&) = default;
    };
    struct NumberLimits {
        std::int32_t type = 0;
        std::int32_t lowest = 0;
        std::int32_t highest = 0;
        friend bool operator==(const NumberLimits&, const NumberLimits&) = default;
    };
    struct Balloon {
        int id = 0;
        std::wstring title;
        std::wstring text;
        friend bool operator==(const Balloon&, const Balloon&) = default;
    };

    /// Called when an edit's text was set, as a real edit tells its dialog.
    std::function<void(int id)> onTextSet = [](int) {};
    /// Called while a message box is open.
    std::function<void()> onMessage = [] {};
    /// Called when the angle box is asked for its text, before it answers.
    std::function<void()> onAngleAsked = [] {};
    /// What the folder browser answers.
    SBrowsedFolder browsed;

    void SetUpWindow() override { Record(L"set up", 0, L""); }
    void SetTitle(const std::wstring& text) override {
        m_title = text;
        Record(L"title", 0, text);
    }
    std::wstring GetText(int id) const override { return At(id).text; }
    void SetText(int id, const std::wstring& text) override {
        m_controls[id].text = text;
        Record(L"text", id, text);
        onTextSet(id);
    }
    void SetAccessibleName(int id, const std::wstring& name) override { Record(L"name", id, name); }
    void ShowFolder(int id, const std::wstring& folder) override {
        m_controls[id].text = folder;
        Record(L"folder", id, folder);
    }
    void Enable(int id, bool enabled) override {
        m_controls[id].enabled = enabled;
        Record(L"enable", id, enabled ? L"1" : L"0");
    }
    void Show(int id, bool shown) override {
        m_controls[id].shown = shown;
        Record(L"show", id, shown ? L"1" : L"0");
    }
    bool IsChecked(int id) const override { return m_checked == id; }
    void Check(int id) override {
        m_checked = id;
        Record(L"check", id, L"");
    }
    void ClearEntries(int) override { m_entries.clear(); }
    void AddEntry(int, std::wstring_view text, std::int32_t data) override {
        m_entries.push_back({std::wstring(text), data});
    }
    void SelectEntry(int, int index) override {
        const Entry& entry = m_entries.at(static_cast<std::size_t>(index));
        SelectAngle(entry.data, entry.text);
    }
    std::int32_t SelectedData(int) const override { return m_angleCode; }
    std::wstring SelectedText(int) const override {
        onAngleAsked();
        return m_angleText;
    }
    void SetNumberLimits(int id, std::int32_t type, std::int32_t lowest,
                         std::int32_t highest) override {
        m_limits[id] = {type, lowest, highest};
        Record(L"limits", id, std::to_wstring(highest));
    }
    void ShowBalloon(int id, const std::wstring& title, const std::wstring& text) override {
        m_balloons.push_back({id, title, text});
        Record(L"balloon", id, text);
    }
    void SelectWholeText(int id) override { Record(L"select", id, L""); }
    void SetProgressRange(int id, int lowest, int highest) override {
        Record(L"range", id, std::to_wstring(lowest) + L" " + std::to_wstring(highest));
    }
    void SetProgress(int id, int position) override {
        m_positions.push_back(position);
        Record(L"progress", id, std::to_wstring(position));
    }
    void ShowRunState(ERunState state) override { Record(L"run", static_cast<int>(state), L""); }
    void CallUser() override { Record(L"call", 0, L""); }
    void ShowMessage(const std::wstring& text, std::uint32_t style) override {
        m_messages.push_back({text, style});
        Record(L"message", static_cast<int>(style), text);
        onMessage();
    }
    void ShowWaitCursor(bool shown) override { Record(L"wait", 0, shown ? L"1" : L"0"); }

    SBrowsedFolder BrowseForFolder(const std::wstring& opened) override {
        Record(L"browse", 0, opened);
        return browsed;
    }
    void LanguageChanged(std::int32_t langId) override { Record(L"language", langId, L""); }

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
    const std::wstring& Title() const { return m_title; }
    const std::vector<Entry>& Entries() const { return m_entries; }
    const NumberLimits& Limits(int id) const { return m_limits.at(id); }
    const std::vector<Balloon>& Balloons() const { return m_balloons; }
    const std::vector<int>& Positions() const { return m_positions; }
    const std::vector<Message>& Messages() const { return m_messages; }
    /// Every call so far, "what id value".
    const std::vector<std::wstring>& Calls() const { return m_calls; }
    void Forget() {
        m_calls.clear();
        m_positions.clear();
        m_messages.clear();
        m_balloons.clear();
    }

  private:
    void Record(const wchar_t* what, int id, const std::wstring& value) {
        m_calls.push_back(std::wstring(what) + L" " + std::to_wstring(id) + L" " + value);
    }

    std::map<int, Control> m_controls;
    std::map<int, NumberLimits> m_limits;
    std::vector<Entry> m_entries;
    std::vector<Balloon> m_balloons;
    std::wstring m_title;
    int m_checked = 0;
    std::vector<int> m_positions;
    std::vector<Message> m_messages;
    std::vector<std::wstring> m_calls;
    std::int32_t m_angleCode = -1;
    std::wstring m_angleText;
};

} // namespace trevolt::test
