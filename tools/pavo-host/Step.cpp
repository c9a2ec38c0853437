#include "tools/pavo-host/Step.h"

#include "tools/pavo-host/HostSession.h"

#include <utility>

Step arrangeStep(std::function<bool(Sessions&, QString& problem)> arrange)
{
    Step step = immediateStep(nullptr);
    step.arrange = std::move(arrange);
    return step;
}

Step immediateStep(std::function<void(HostSession&)> action)
{
    Step step;
    step.start = std::move(action);
    step.check = [](HostSession&) { return Verdict{}; };
    step.needsWorkbench = false;
    return step;
}

Step sendStep(const QByteArray& bytes)
{
    Step step;
    step.start = [bytes](HostSession& session) {
        if (session.canWrite())
            session.send(bytes);
    };
    step.check = [](HostSession& session) {
        if (!session.canWrite())
            return Verdict{Verdict::Failed, QStringLiteral("nobody reads the pipe any more")};
        return Verdict{session.isWritten() ? Verdict::Met : Verdict::Waiting, {}};
    };
    step.awaited = QStringLiteral("a workbench that reads");
    return step;
}
