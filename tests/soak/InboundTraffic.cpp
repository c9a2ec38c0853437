#include "tests/soak/InboundTraffic.h"

#include "tests/soak/Clock.h"

#include <iterator>

namespace InboundTraffic {

namespace {

const Message kStart[] = {
    {R"({"name":"ChangeSetting","arguments":["{\"skinName\":\"lakeblue\",\"hotKey\":[{\"keyCode\":81}],)"
     R"(\"shortcut\":[{\"keyCode\":82}]}"]})",
     3},
    {R"({"name":"OpenLXWindow","arguments":["customer-1",3]})", 1},
    {R"({"name":"OpenLXGroup","arguments":["group-1","hello"]})", 1},
    {R"({"name":"Login","arguments":["pin",false,1,"desktop","","token"]})", 0},
};

struct Row
{
    double weight; ///< How often it comes, compared with the others.
    Message message;
};

const Row kRows[] = {
    {1,
     {R"({"name":"ChangeSetting","arguments":["{\"proxy\":{\"proxytype\":1,\"proxyaddr\":\"a\",)"
      R"(\"proxyport\":80,\"proxyuser\":\"u\",\"proxypass\":\"p\"},\"skinName\":\"violet\",)"
      R"(\"hotKey\":[{\"valid\":true,\"modifiers\":2,\"keyCode\":81,\"functionName\":\"f\"}]}"]})",
      3}},
    {1, {R"({"name":"ChangeSetting","arguments":["{\"merge\":true}"]})", 2}},
    {0.02, {R"({"name":"ChangeSetting","arguments":["{\"merge\":false}"]})", 2}},
    {1, {R"({"name":"Login","arguments":[" Pin ",true,88,"desktop","","token"]})", 0}},
    {1, {R"({"name":"ChangeStatus","arguments":[2],"sequence":7,"source":"host"})", 0}},
    {1, {R"({"name":"OpenLXWindow","arguments":["customer-7",3,"order-42"]})", 1}},
    {1, {"{\"name\":\"OpenLXGroup\",\"arguments\":[\"\xe5\xbc\xa0\xe4\xb8\x89\",\"hello\"]}", 1}},
    {1, {R"({"name":"OpenBaseInfoSettingWindow"})", 1}},
    {1, {R"({"name":"ChangeSkin","arguments":["{\"skinName\":\"emerald\"}"]})", 1}},
    {1, {R"({"name":"ChangeSkin","arguments":["{\"skinName\":\"orange\"}"]})", 1}},
    {1, {R"({"name":"ShowUnreadMessageList","arguments":[true,10,20,30,60]})", 1}},
    {1, {R"({"name":"OpenLXGroup","arguments":["group",")" + QByteArray(4000, 'x') + "\"]}", 1}},
    // Broken ones.
    {.2, {"", 0}},
    {.2, {"abc", 0}},
    {.2, {"[1,2,3]", 0}},
    {.2, {R"({"name":"Login")", 0}},
    {.2, {"\xff\xfe\x80", 0}},
    {.2, {QByteArray(1000, '['), 0}},
    {.2, {R"({"name":"NoSuchMessage","arguments":[]})", 0}},
    {.2, {R"({"name":"login","arguments":["pin",false,1,"","","t"]})", 0}},
    {.2, {R"({"name":"Login","arguments":["pin",false]})", 0}},
    {.2, {R"({"name":"Login","arguments":{"0":"pin"}})", 0}},
    {.2, {R"({"name":"ChangeStatus","arguments":["two"]})", 0}},
    {.2, {R"({"name":"ChangeSetting","arguments":["no JSON"]})", 0}},
    {.2, {R"({"name":"ChangeSetting","arguments":["{\"hotKey\":7,\"shortcut\":{}}"]})", 2}},
    {.2, {R"({"name":"ChangeSkin","arguments":["{\"skinName\":\"geekblue\"}"]})", 0}},
    {.2, {R"({"name":"OpenLXWindow","arguments":[]})", 0}},
    {.2, {R"({"name":"OpenLXWindow","arguments":[null,"three"]})", 1}},
    {.2, {R"({"name":"ShowUnreadMessageList","arguments":[true,1,2,3]})", 0}},
    {.2, {R"({"name":"Request","arguments":[{"api":"unknown"}]})", 0}},
    {.2, {R"({"name":"Request","arguments":["text"]})", 0}},
};

} // namespace

const Message* begin()
{
    return std::begin(kStart);
}

const Message* end()
{
    return std::end(kStart);
}

const Message& any(std::mt19937& random)
{
    static const auto weights = [] {
        std::vector<double> all;
        for (const Row& row : kRows)
            all.push_back(row.weight);
        return std::discrete_distribution<std::size_t>(all.begin(), all.end()).param();
    }();
    return kRows[std::discrete_distribution<std::size_t>(weights)(random)].message;
}

Message numbered(long long number)
{
    return {R"({"name":"Request","arguments":[{"api":"showLXAccusation","url":")" +
                QByteArray::number(number) + ' ' + QByteArray::number(nowUs()) + "\"}]}",
            1};
}

QByteArray garbage()
{
    return {4096, '\x7f'};
}

} // namespace InboundTraffic
