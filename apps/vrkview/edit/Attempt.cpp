#include "edit/Attempt.h"

#include <QObject>

#include <Standard_Failure.hxx>

#include <exception>

namespace vrkview {

void attempt(const std::function<void()>& act, const std::function<void(const QString&)>& tell)
{
    const auto tellOf = [&tell](const char* cause) { tell(QObject::tr("%1\nThe station is as before.").arg(cause)); };
    try {
        act();
    } catch (const Standard_Failure& failure) {
        tellOf(failure.GetMessageString());
    } catch (const std::exception& failure) {
        tellOf(failure.what());
    }
}

} // namespace vrkview
