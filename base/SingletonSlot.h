#pragma once

#include <memory>

// The one instance of T behind T::theInstance(): built on first use and
// dropped by reset(), so that the next use builds it anew from the files on
// disk (tests start every case that way). A T with a private constructor
// declares SingletonSlot<T> its friend.
template<class T>
class SingletonSlot
{
public:
    static T* instance()
    {
        std::unique_ptr<T>& instance = slot();
        if (!instance)
            instance.reset(new T);
        return instance.get();
    }

    static void reset() { slot().reset(); }

private:
    static std::unique_ptr<T>& slot()
    {
        static std::unique_ptr<T> instance;
        return instance;
    }
};
