<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ko_KR" sourcelanguage="en">
<context>
    <name>Words</name>
    <message>
        <source>denied</source>
        <translation>거부됨</translation>
    </message>
</context>
</TS>
