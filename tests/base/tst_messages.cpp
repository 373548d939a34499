#include "Exceptions.h"
#include "TestMain.h"

#include <QTest>

namespace {

std::string filled(const char* text, std::initializer_list<const char*> parameters)
{
    cRef<cUserMessage> message(new cStringMessage(text));
    for (const char* parameter : parameters)
        *message << parameter;
    return message->GetMessage();
}

// Counts its destructions; a release from inside the destructor must be
// ignored instead of deleting the message a second time.
class CountedMessage : public cStringMessage
{
public:
    explicit CountedMessage(int& destroyed) : cStringMessage("counted"), m_destroyed(destroyed) {}
    ~CountedMessage() override
    {
        cRef<cUserMessage> selfReference(this);
        ++m_destroyed;
    }

private:
    int& m_destroyed;
};

} // namespace

class MessageTests : public QObject
{
    Q_OBJECT

private slots:
    void placeholders()
    {
        QCOMPARE(filled("<%s> und <%s>", {"x", "y"}), std::string("<x> und <y>"));
        QCOMPARE(filled("<%s> und <%s>", {"x"}), std::string("<x> und <%s>"));
        QCOMPARE(filled("%1 vor %0", {"x", "y"}), std::string("%1 vor x"));
        QCOMPARE(filled("Inidatei \"%0\" nicht gefunden.", {"a.ini", "zuviel"}),
                 std::string("Inidatei \"a.ini\" nicht gefunden."));
        // "%0" is preferred over an earlier "%s"; a parameter that brings a
        // placeholder of its own is filled by the next one.
        QCOMPARE(filled("%s %0", {"x", "y"}), std::string("y x"));
        QCOMPARE(filled("[%s]", {"a%0b", "c"}), std::string("[acb]"));
        QCOMPARE(filled("ohne", {"x"}), std::string("ohne"));

        // The first read freezes the text.
        cRef<cUserMessage> message(new cStringMessage("%s-%s"));
        *message << "a";
        QCOMPARE(message->GetMessage(), std::string("a-%s"));
        *message << "b";
        QCOMPARE(message->GetMessage(), std::string("a-%s"));
    }

    void parameterTypes()
    {
        cRef<cUserMessage> message(new cStringMessage("%s|%s|%s|%s|%s|%s|%s|%s|%s"));
        const unsigned char bytes[] = "uc";
        *message << 4294967295u << 2147483648ul << static_cast<unsigned short>(65535) << 'c'
                 << static_cast<unsigned char>('\xE4') << bytes << 3.14159265 << 1e-7f
                 << std::string("s");
        QCOMPARE(message->GetMessage(),
                 std::string("-1|-2147483648|65535|c|\xE4|uc|3.14159|1e-07|s"));
    }

    void stackAndExceptions()
    {
        cUserMessageStack empty;
        QCOMPARE(empty.GetMessage("\n"), std::string());

        xNvFatalExc fatal(new cStringMessage("m1 %s"));
        fatal.Push(new cStringMessage("m2 %s"));
        fatal << "zu m2";
        QCOMPARE(std::string(fatal.what()), std::string("m2 zu m2\nm1 %s"));

        // The parameter added on the way to throw keeps the exception's type.
        try {
            throw xNvFatalExc(new cStringMessage("Programmmodus <%s> unbekannt.")) << "xyz";
        } catch (const xNvFatalExc& e) {
            QCOMPARE(std::string(e.what()), std::string("Programmmodus <xyz> unbekannt."));
        }

        AbortCurrentWorkflowException abort(AbortCurrentWorkflowException::PlainAbort, nullptr);
        QCOMPARE(std::string(abort.what()), std::string());
        QCOMPARE(std::string(xNvException().what()), std::string());
    }

    void sharingAndRelease()
    {
        int destroyed = 0;
        {
            cRef<cUserMessage> first(new CountedMessage(destroyed));
            cUserMessageStack stack;
            stack.Push(first);
            cUserMessageStack copy = stack;
            copy << "shared";
            QCOMPARE(first->RefCount(), 3);
            first = cRef<cUserMessage>();
            stack.Clear();
            QCOMPARE(destroyed, 0);
            QCOMPARE(copy.GetMessage("/"), std::string("counted"));
        }
        QCOMPARE(destroyed, 1);
    }
};

SC_TEST(MessageTests)
#include "tst_messages.moc"
