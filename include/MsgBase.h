#ifndef LUMO25D_MSGBASE_H
#define LUMO25D_MSGBASE_H

#include "Lumo25DApi.h"

namespace ORBI_LUMO25D
{

/// What a subscriber can ask for.
enum MsgType : int
{
    MSG_PROGRESS = 0 ///< how far a long operation has come
};

/// A listener: derive from it, implement update(), and hand it to a subscribe() of the library.
///
/// The library keeps the pointer only. The object is the caller's and must live until it is unsubscribed or
/// until everything that it listens to is destroyed. It is called from the thread that called the library.
/// Inside update() listeners may be subscribed and unsubscribed, this one included.
///
///     struct Gauge : public MsgBase
///     {
///         void update(MsgType, const char* s, double d) override
///         {
///             std::cout << s << ": " << 100.0 * d << " %\n";
///         }
///     };
class LUMO25D_API MsgBase
{
public:
    /// A listener has no state but that of the class derived.
    MsgBase() = default;
    MsgBase(const MsgBase&) = default;
    MsgBase& operator=(const MsgBase&) = default;
    virtual ~MsgBase();

    /// Called about a hundred times at most per step. s is the name of the running step, valid during the
    /// call; d is the completed fraction, 0 to 1.
    virtual void update(MsgType msgType, const char* s, double d) = 0;
};

} // namespace ORBI_LUMO25D

#endif
