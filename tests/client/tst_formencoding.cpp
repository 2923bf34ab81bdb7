#include "tst_formencoding.h"

#include <Brevanti/BVTManager.h>

#include <QTest>

void TestFormEncoding::initTestCase()
{
    m_local = std::make_unique<LocalService>();
}

void TestFormEncoding::init()
{
    m_local->reset();
}

void TestFormEncoding::parametersTravelAsExactBytes_data()
{
    QTest::addColumn<BVTParameters>("parameters");
    QTest::addColumn<QByteArray>("encoded");
    QTest::addColumn<QVariantMap>("decoded"); // as the service reads the pairs back

    QTest::newRow("nothing") << BVTParameters() << QByteArray() << QVariantMap();
    QTest::newRow("keys in ascending order")
            << BVTParameters{{"scope", "s"}, {"b", "2"}, {"B", "3"}, {"a", "1"}}
            << QByteArray("B=3&a=1&b=2&scope=s")
            << QVariantMap{{"B", "3"}, {"a", "1"}, {"b", "2"}, {"scope", "s"}};
    QTest::newRow("nesting") << BVTParameters{{"user", BVTParameters{{"identifier", "u-1"}}},
                                              {"device",
                                               BVTParameters{{"uuid", "d-1"}, {"os", "ios"}}}}
                             << QByteArray("device[os]=ios&device[uuid]=d-1&user[identifier]=u-1")
                             << QVariantMap{{"device[os]", "ios"},
                                            {"device[uuid]", "d-1"},
                                            {"user[identifier]", "u-1"}};
    QTest::newRow("deep nesting")
            << BVTParameters{{"a", BVTParameters{{"b", BVTParameters{{"c", "d"}}}}}}
            << QByteArray("a[b][c]=d") << QVariantMap{{"a[b][c]", "d"}};
    QTest::newRow("arrays") << BVTParameters{{"ids", QVariantList{"3", "1", "2"}}, {"x", "y"}}
                            << QByteArray("ids[]=3&ids[]=1&ids[]=2&x=y")
                            << QVariantMap{{"ids[]", QVariantList{"3", "1", "2"}}, {"x", "y"}};
    QTest::newRow("reserved characters")
            << BVTParameters{{"q", "a b&c=d+e;f,g:h@i#j$k!l'm(n)o*p[q]r%s"}}
            << QByteArray("q=a%20b%26c%3Dd%2Be%3Bf%2Cg%3Ah%40i%23j%24k%21l%27m%28n%29o%2Ap%5Bq%5Dr%"
                          "25s")
            << QVariantMap{{"q", "a b&c=d+e;f,g:h@i#j$k!l'm(n)o*p[q]r%s"}};
    QTest::newRow("left as they are")
            << BVTParameters{{"path", "a/b?c-d.e_f~g"}} << QByteArray("path=a/b?c-d.e_f~g")
            << QVariantMap{{"path", "a/b?c-d.e_f~g"}};
    QTest::newRow("non-ascii")
            << BVTParameters{{"näme", "Grüße 東京 🎉"}}
            << QByteArray("n%C3%A4me=Gr%C3%BC%C3%9Fe%20%E6%9D%B1%E4%BA%AC%20%F0%9F%8E%89")
            << QVariantMap{{"näme", "Grüße 東京 🎉"}};
    QTest::newRow("brackets inside a key are data")
            << BVTParameters{{"a[b]", BVTParameters{{"c]", "1"}}}} << QByteArray("a%5Bb%5D[c%5D]=1")
            << QVariantMap{{"a[b][c]]", "1"}};
    QTest::newRow("empty and null values")
            << BVTParameters{{"empty", ""}, {"none", QVariant()}} << QByteArray("empty=&none")
            << QVariantMap{{"empty", ""}, {"none", ""}};
    QTest::newRow("numbers") << BVTParameters{{"n", 42}, {"f", 1.5}} << QByteArray("f=1.5&n=42")
                             << QVariantMap{{"f", "1.5"}, {"n", "42"}};
}

void TestFormEncoding::parametersTravelAsExactBytes()
{
    QFETCH(BVTParameters, parameters);
    QFETCH(QByteArray, encoded);
    QFETCH(QVariantMap, decoded);

    auto manager = BVTManager::initWithLaunchOptions({}, LocalService::clientId,
                                                     LocalService::clientSecret);
    int done = 0;
    QVariantMap query;
    QVariantMap form;
    manager->getUrl(
            "/echo", parameters,
            [&](const QVariant &answer) {
                query = answer.toMap().value("query").toMap();
                ++done;
            },
            nullptr);
    manager->postUrl(
            "/echo", parameters,
            [&](const QVariant &answer) {
                form = answer.toMap().value("form").toMap();
                ++done;
            },
            nullptr);
    QTRY_COMPARE(done, 2);

    const auto requests = m_local->requestsFor("/echo");
    QCOMPARE(requests.size(), 2);
    for (const bvtsim::RecordedRequest &request : requests) {
        if (request.method == "GET")
            QCOMPARE(request.query, encoded);
        else
            QCOMPARE(request.body, encoded);
    }
    QCOMPARE(query, decoded);
    QCOMPARE(form, decoded);
}

void TestFormEncoding::queryIsAddedToAPathThatHasOne()
{
    auto manager = BVTManager::initWithLaunchOptions({}, LocalService::clientId,
                                                     LocalService::clientSecret);
    bool answered = false;
    manager->getUrl(
            "/echo?page=2", {{"a", "1"}}, [&](const QVariant &) { answered = true; }, nullptr);
    QTRY_VERIFY(answered);
    QCOMPARE(m_local->requestsFor("/echo").first().query, QByteArray("page=2&a=1"));
}
