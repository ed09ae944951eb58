// ChildDescription: what a child process is launched with.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <utility>

namespace varda {

/// Where one of a child's three standard streams leads.
struct StandardStream
{
    enum class Kind { Inherited, NullDevice, Descriptor };

    Kind kind = Kind::Inherited;
    /// The descriptor that the child gets a copy of; -1 for the other kinds.
    int descriptor = -1;

    static constexpr StandardStream inherited() { return {}; }
    static constexpr StandardStream nullDevice() { return {Kind::NullDevice, -1}; }
    /// The caller keeps its own descriptor and may close it as soon as the launch has returned.
    static constexpr StandardStream from(int descriptor) { return {Kind::Descriptor, descriptor}; }
};

/// The variables of this process, as "NAME=value". Call it on the thread that may change them: Qt and its plugins set
/// and unset some on the main thread, for one when a link is opened.
QList<QByteArray> environmentOfThisProcess();

/// What to launch. Beside its streams the child inherits the working directory and the environment, and nothing else:
/// no other descriptor, an empty signal mask and the default action for SIGPIPE.
struct ChildDescription
{
    /// Absolute path; no search path is used.
    QString executable;
    /// Passed verbatim, in UTF-8, after the executable's path as argument 0.
    QStringList arguments;
    /// Variables that are added to the inherited environment, or replace variables there, in this order.
    QList<std::pair<QString, QString>> environment;
    StandardStream standardInput;
    StandardStream standardOutput;
    StandardStream standardError;
    /// Whether the child leads a session of its own, so that signals to our terminal's process group miss it.
    bool ownSession = false;
    /// The environment when this description is made, whichever thread launches the child later.
    QList<QByteArray> inheritedEnvironment = environmentOfThisProcess();
};

} // namespace varda
