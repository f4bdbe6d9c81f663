#include "edit/MeshSimplifying.h"

#include "platform/common/Logger.h"

#include <filesystem>

namespace vrkview {
namespace {

struct GivenUp {};

} // namespace

MeshSimplifying::MeshSimplifying(QObject* parent) : LongWork(parent) {}

MeshSimplifying::~MeshSimplifying()
{
    worker.request_stop();
}

void MeshSimplifying::start(std::vector<ExchangedMesh> meshes, const QString& title, MeshWork make)
{
    if (isRunning() || meshes.empty())
        return;
    emit started(title);
    worker = std::jthread([this, meshes = std::move(meshes), make = std::move(make)](const std::stop_token& stop) {
        const Result result = work(stop, meshes, make);
        QMetaObject::invokeMethod(
            this, [this, result] { finish(result); }, Qt::QueuedConnection);
    });
}

void MeshSimplifying::cancel()
{
    worker.request_stop();
}

MeshSimplifying::Result MeshSimplifying::work(const std::stop_token& stop, std::vector<ExchangedMesh> meshes,
                                              const MeshWork& make)
{
    Result result;
    try {
        for (std::size_t i = 0; i < meshes.size(); ++i) {
            const std::filesystem::path file = meshes[i].before;
            const auto report = [&](std::string_view step, double fraction) {
                if (stop.stop_requested())
                    throw GivenUp();
                const double all = (static_cast<double>(i) + fraction) / static_cast<double>(meshes.size());
                const QString text = tr("%1: %2").arg(QString::fromStdString(file.filename().string()),
                                                      QString::fromUtf8(step.data(), static_cast<int>(step.size())));
                QMetaObject::invokeMethod(
                    this, [this, text, all] { emit progressed(text, all); }, Qt::QueuedConnection);
            };
            result.told.push_back(make(file, report));
            meshes[i].after = result.told.back().file.string();
        }
        result.meshes = std::move(meshes);
        result.isWhole = true;
    } catch (const GivenUp&) {
        return {};
    } catch (const std::exception& failure) {
        result.failure = QString::fromUtf8(failure.what());
    }
    return result;
}

void MeshSimplifying::finish(const Result& result)
{
    worker.join();
    worker = {};
    if (result.isWhole)
        emit made(result);
    else if (result.failure.isEmpty())
        emit cancelled();
    else
        emit failed(result.failure);
    emit finished();
}

} // namespace vrkview
