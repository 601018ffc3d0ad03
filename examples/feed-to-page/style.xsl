<?xml version="1.0" encoding="UTF-8"?>
<!-- An Atom feed as a page: the newest entry first, dates in words, an index of topics. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
    xmlns:atom="http://www.w3.org/2005/Atom" xmlns:my="urn:month-names"
    exclude-result-prefixes="atom my">
  <xsl:output method="html" encoding="UTF-8" doctype-system="about:legacy-compat"/>

  <xsl:key name="by-topic" match="atom:entry" use="atom:category/@term"/>
  <xsl:key name="topics" match="atom:category" use="@term"/>

  <my:months>
    <my:m>January</my:m><my:m>February</my:m><my:m>March</my:m><my:m>April</my:m><my:m>May</my:m>
    <my:m>June</my:m><my:m>July</my:m><my:m>August</my:m><my:m>September</my:m><my:m>October</my:m>
    <my:m>November</my:m><my:m>December</my:m>
  </my:months>
  <xsl:variable name="months" select="document('')/*/my:months/my:m"/>

  <xsl:template match="/atom:feed">
    <html lang="{@xml:lang}">
      <head>
        <title><xsl:value-of select="atom:title"/></title>
        <meta name="viewport" content="width=device-width"/>
        <style>
          :root { color-scheme: light dark; --quiet: #76808c; --line: #76808c44; --link: #0b6b8f }
          @media (prefers-color-scheme: dark) { :root { --link: #6cc5e6 } }
          body { max-width: 42em; margin: 3em auto; padding: 0 1em;
                 font: 17px/1.6 Charter, Georgia, serif }
          h1 { margin: 0; font-size: 2em; line-height: 1.2 }
          h2 { margin: 0; font-size: 1.3em } a { color: var(--link); text-decoration: none }
          .quiet, time, nav { color: var(--quiet); font: 14px/1.6 system-ui, sans-serif }
          nav { margin: 1.5em 0; padding: .6em 0; border: solid var(--line); border-width: 1px 0 }
          nav a, .topics a { margin-right: 1em } nav sup { margin-left: .2em }
          article { margin: 2.5em 0 }
        </style>
      </head>
      <body>
        <header>
          <h1><xsl:value-of select="atom:title"/></h1>
          <p class="quiet"><xsl:value-of select="atom:subtitle"/></p>
          <nav>
            <xsl:apply-templates select="//atom:category[generate-id() =
                generate-id(key('topics', @term)[1])]" mode="index">
              <xsl:sort select="@term"/>
            </xsl:apply-templates>
          </nav>
        </header>
        <xsl:apply-templates select="atom:entry">
          <xsl:sort select="atom:updated" order="descending"/>
        </xsl:apply-templates>
        <footer class="quiet">
          <xsl:value-of select="count(atom:entry)"/>
          <xsl:text> entries, the last one of </xsl:text>
          <xsl:apply-templates select="atom:updated"/>
        </footer>
      </body>
    </html>
  </xsl:template>

  <!-- A topic in the index leads to its newest entry, which a feed has first. -->
  <xsl:template match="atom:category" mode="index">
    <a href="#{generate-id(key('by-topic', @term)[1])}">
      <xsl:value-of select="@term"/>
      <sup><xsl:value-of select="count(key('by-topic', @term))"/></sup>
    </a>
  </xsl:template>

  <xsl:template match="atom:entry">
    <article id="{generate-id()}">
      <h2>
        <a href="{atom:link[@rel = 'alternate']/@href}"><xsl:value-of select="atom:title"/></a>
      </h2>
      <p class="quiet">
        <xsl:apply-templates select="atom:updated"/>
        <xsl:text> · </xsl:text>
        <xsl:value-of select="(atom:author | ../atom:author)[last()]/atom:name"/>
        <xsl:for-each select="atom:category">
          <xsl:text> · </xsl:text>
          <xsl:value-of select="@term"/>
        </xsl:for-each>
      </p>
      <xsl:apply-templates select="(atom:content | atom:summary)[1]"/>
    </article>
  </xsl:template>

  <xsl:template match="atom:updated">
    <time datetime="{.}">
      <xsl:value-of select="number(substring(., 9, 2))"/>
      <xsl:text> </xsl:text>
      <xsl:value-of select="$months[number(substring(current(), 6, 2))]"/>
      <xsl:text> </xsl:text>
      <xsl:value-of select="substring(., 1, 4)"/>
    </time>
  </xsl:template>

  <!-- The three kinds of text that a feed may hold: plain, escaped markup, elements. -->
  <xsl:template match="atom:content | atom:summary">
    <p><xsl:value-of select="."/></p>
  </xsl:template>

  <xsl:template match="atom:content[@type = 'html']">
    <xsl:value-of select="." disable-output-escaping="yes"/>
  </xsl:template>

  <xsl:template match="atom:content[@type = 'xhtml']">
    <xsl:apply-templates select="*/node()" mode="plain-html"/>
  </xsl:template>

  <!-- The elements of a page written as html are in no namespace. -->
  <xsl:template match="*" mode="plain-html">
    <xsl:element name="{local-name()}">
      <xsl:copy-of select="@*"/>
      <xsl:apply-templates mode="plain-html"/>
    </xsl:element>
  </xsl:template>
</xsl:stylesheet>
