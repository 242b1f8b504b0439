// A function of the platform or of a library as the service finds it here: each call goes to the function or,
// where the plan says so, does nothing but fail.
#pragma once

#include <cerrno>
#include <tuple>

#include "FaultPlan.h"

namespace Faults {

/** The plan that PlanVariable names, or one by which nothing fails. Any thread, from load time on. */
Plan& plan();

/** Changes the event and wakes who waits for it. */
void tell(Event& event, int change = 1);

class Point {
  public:
    explicit Point(const char* name);

    /** Counts a call that returns to that address. */
    bool fails(const void* site);

    template <typename Failure, typename Real>
    auto call(const void* site, Failure failure, Real real) -> decltype(real())
    {
        if (fails(site))
            return failure();
        return real();
    }

  private:
    Function& function_;
};

/** The failure of a function that tells its reason in errno. */
template <typename Result>
Result errorOf(int number, Result result)
{
    errno = number;
    return result;
}

template <typename Type>
struct Signature;
template <typename Result_, typename... Arguments>
struct Signature<Result_(Arguments...)> {
    using Result = Result_;
    template <std::size_t index>
    using Argument = std::tuple_element_t<index, std::tuple<Arguments...>>;
};
template <typename Result_, typename... Arguments>
struct Signature<Result_(Arguments...) noexcept> : Signature<Result_(Arguments...)> {
};

}  // namespace Faults

// POINTn(function, failure): the point of a function with n parameters; `failure` is what it returns then,
// and may set errno on the way. The name is what the service's calls are redirected to.
// Where the service called from.
#define FAULTS_SITE __builtin_return_address(0)
#define FAULTS_RESULT(function) Faults::Signature<decltype(function)>::Result
#define FAULTS_ARGUMENT(function, index) Faults::Signature<decltype(function)>::Argument<index>
#define FAULTS_BODY(function, failure, real)             \
    {                                                    \
        static Faults::Point point(#function);           \
        return point.call(                               \
            FAULTS_SITE, [&] { return failure; }, real); \
    }
#define POINT0(function, failure)                               \
    extern "C" FAULTS_RESULT(function) faulty_##function(void); \
    FAULTS_RESULT(function) faulty_##function(void) FAULTS_BODY(function, failure, [&] { return function(); })
#define POINT1(function, failure)                                                       \
    extern "C" FAULTS_RESULT(function) faulty_##function(FAULTS_ARGUMENT(function, 0)); \
    FAULTS_RESULT(function)                                                             \
    faulty_##function(FAULTS_ARGUMENT(function, 0) a)                                   \
        FAULTS_BODY(function, failure, [&] { return function(a); })
#define POINT2(function, failure)                                                      \
    extern "C" FAULTS_RESULT(function)                                                 \
        faulty_##function(FAULTS_ARGUMENT(function, 0), FAULTS_ARGUMENT(function, 1)); \
    FAULTS_RESULT(function)                                                            \
    faulty_##function(FAULTS_ARGUMENT(function, 0) a, FAULTS_ARGUMENT(function, 1) b)  \
        FAULTS_BODY(function, failure, [&] { return function(a, b); })
#define POINT3(function, failure)                                                                  \
    extern "C" FAULTS_RESULT(function) faulty_##function(                                          \
        FAULTS_ARGUMENT(function, 0), FAULTS_ARGUMENT(function, 1), FAULTS_ARGUMENT(function, 2)); \
    FAULTS_RESULT(function)                                                                        \
    faulty_##function(FAULTS_ARGUMENT(function, 0) a, FAULTS_ARGUMENT(function, 1) b,              \
                      FAULTS_ARGUMENT(function, 2) c)                                              \
        FAULTS_BODY(function, failure, [&] { return function(a, b, c); })
#define POINT4(function, failure)                                                      \
    extern "C" FAULTS_RESULT(function)                                                 \
        faulty_##function(FAULTS_ARGUMENT(function, 0), FAULTS_ARGUMENT(function, 1),  \
                          FAULTS_ARGUMENT(function, 2), FAULTS_ARGUMENT(function, 3)); \
    FAULTS_RESULT(function)                                                            \
    faulty_##function(FAULTS_ARGUMENT(function, 0) a, FAULTS_ARGUMENT(function, 1) b,  \
                      FAULTS_ARGUMENT(function, 2) c, FAULTS_ARGUMENT(function, 3) d)  \
        FAULTS_BODY(function, failure, [&] { return function(a, b, c, d); })
#define POINT5(function, failure)                                                                 \
    extern "C" FAULTS_RESULT(function) faulty_##function(                                         \
        FAULTS_ARGUMENT(function, 0), FAULTS_ARGUMENT(function, 1), FAULTS_ARGUMENT(function, 2), \
        FAULTS_ARGUMENT(function, 3), FAULTS_ARGUMENT(function, 4));                              \
    FAULTS_RESULT(function)                                                                       \
    faulty_##function(FAULTS_ARGUMENT(function, 0) a, FAULTS_ARGUMENT(function, 1) b,             \
                      FAULTS_ARGUMENT(function, 2) c, FAULTS_ARGUMENT(function, 3) d,             \
                      FAULTS_ARGUMENT(function, 4) e)                                             \
        FAULTS_BODY(function, failure, [&] { return function(a, b, c, d, e); })

// ENDn: what gives something back does so also where it must fail: nobody else could.
#define END1(function, failure)                                                         \
    extern "C" FAULTS_RESULT(function) faulty_##function(FAULTS_ARGUMENT(function, 0)); \
    FAULTS_RESULT(function)                                                             \
    faulty_##function(FAULTS_ARGUMENT(function, 0) a)                                   \
        FAULTS_BODY(function, (function(a), failure), [&] { return function(a); })
#define END2(function, failure)                                                        \
    extern "C" FAULTS_RESULT(function)                                                 \
        faulty_##function(FAULTS_ARGUMENT(function, 0), FAULTS_ARGUMENT(function, 1)); \
    FAULTS_RESULT(function)                                                            \
    faulty_##function(FAULTS_ARGUMENT(function, 0) a, FAULTS_ARGUMENT(function, 1) b)  \
        FAULTS_BODY(function, (function(a, b), failure), [&] { return function(a, b); })
