#include "tests/model/Explanation.h"

#include <algorithm>
#include <set>

namespace {

using Records = AccountsModel::Records;

class Search
{
public:
    Search(const std::vector<Records>& reports, std::string segment)
        : m_reports(reports)
        , m_segment(std::move(segment))
        , m_done(reports.size())
    {
    }

    bool explain(AccountsModel& model)
    {
        bool isIdle = true;
        for (int i = 0; i < model.count(); ++i) {
            if (!model.hasMail(i))
                continue;
            isIdle = false;
            AccountsModel next = model;
            const Records records = next.deliverOne(i);
            if (!follows(i, records))
                continue;
            std::size_t& done = m_done[static_cast<std::size_t>(i)];
            done += records.size();
            if (isNew(next) && explain(next)) {
                model = std::move(next);
                return true;
            }
            done -= records.size();
        }
        return isIdle && isAllReported() && model.segmentText() == m_segment;
    }

private:
    [[nodiscard]] bool follows(int process, const Records& records) const
    {
        const Records& report = m_reports[static_cast<std::size_t>(process)];
        const std::size_t done = m_done[static_cast<std::size_t>(process)];
        return report.size() - done >= records.size() &&
               std::equal(records.begin(), records.end(),
                          report.begin() + static_cast<std::ptrdiff_t>(done));
    }

    [[nodiscard]] bool isAllReported() const
    {
        for (std::size_t i = 0; i < m_reports.size(); ++i) {
            if (m_done[i] != m_reports[i].size())
                return false;
        }
        return true;
    }

    /// Many orders lead to one state, which is looked at once.
    bool isNew(const AccountsModel& model)
    {
        std::string state = model.stateText();
        for (const std::size_t each : m_done)
            state += ' ' + std::to_string(each);
        return m_seen.insert(std::move(state)).second;
    }

    const std::vector<Records>& m_reports;
    std::string m_segment;
    std::vector<std::size_t> m_done; ///< of each report
    std::set<std::string> m_seen;
};

} // namespace

bool explain(AccountsModel& model, const std::vector<Records>& reports, const std::string& segment)
{
    return Search(reports, segment).explain(model);
}
