<?xml version="1.0" encoding="UTF-8"?>
<!-- An article as one page: numbered sections and tables, a table of contents, cross references by
     number, and the notes gathered at the end. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:import href="numbers.xsl"/>
  <xsl:output method="html" encoding="UTF-8" doctype-system="about:legacy-compat"/>

  <xsl:key name="target" match="section | table" use="@id"/>

  <xsl:template match="/article">
    <html lang="{@lang}">
      <head>
        <title><xsl:value-of select="title"/></title>
        <meta name="viewport" content="width=device-width"/>
        <style>
          body { max-width: 38em; margin: 3em auto; padding: 0 1em; color: #222;
                 font: 17px/1.55 Charter, Georgia, serif }
          h1 { margin-bottom: 0; font-size: 2.1em; line-height: 1.2 }
          h2 { margin-top: 2em } a { color: #7a4a00; text-decoration: none }
          .subtitle { margin-top: .3em; color: #666; font-style: italic }
          .number { margin-right: .6em; color: #999 }
          nav { margin: 2em 0; padding: .5em 1.5em; background: #f7f3ea; border-radius: 6px }
          nav h2 { margin: .3em 0; font-size: 1em } nav ul { padding-left: 1.2em; list-style: none }
          nav > ul { padding: 0 }
          pre { overflow: auto; padding: .8em 1em; background: #f7f3ea; border-radius: 6px }
          table { width: 100%; margin: 1.5em 0; border-collapse: collapse; font-size: .9em }
          caption { padding-bottom: .5em; text-align: left; color: #666 }
          th, td { padding: .3em .8em .3em 0; text-align: left; border-bottom: 1px solid #ddd }
          .days { text-align: right } .notes { font-size: .9em }
        </style>
      </head>
      <body>
        <h1><xsl:value-of select="title"/></h1>
        <p class="subtitle"><xsl:value-of select="subtitle"/></p>
        <xsl:apply-templates select="abstract/p"/>
        <nav>
          <h2>Contents</h2>
          <xsl:call-template name="contents"/>
        </nav>
        <xsl:apply-templates select="section"/>
        <xsl:if test="//note">
          <h2>Notes</h2>
          <ol class="notes">
            <xsl:for-each select="//note">
              <li id="note-{position()}">
                <xsl:apply-templates/>
                <xsl:text> </xsl:text>
                <a href="#mark-{position()}">↩</a>
              </li>
            </xsl:for-each>
          </ol>
        </xsl:if>
      </body>
    </html>
  </xsl:template>

  <!-- The sections below the current element as a list, and theirs as lists in it. -->
  <xsl:template name="contents">
    <ul>
      <xsl:for-each select="section">
        <li>
          <a href="#{@id}"><xsl:call-template name="numbered-title"/></a>
          <xsl:if test="section">
            <xsl:call-template name="contents"/>
          </xsl:if>
        </li>
      </xsl:for-each>
    </ul>
  </xsl:template>

  <xsl:template name="numbered-title">
    <span class="number"><xsl:apply-templates select="." mode="number"/></span>
    <xsl:value-of select="title"/>
  </xsl:template>

  <xsl:template match="section">
    <xsl:element name="h{count(ancestor::section) + 2}">
      <xsl:attribute name="id"><xsl:value-of select="@id"/></xsl:attribute>
      <xsl:call-template name="numbered-title"/>
    </xsl:element>
    <xsl:apply-templates select="*[not(self::title)]"/>
  </xsl:template>

  <xsl:template match="p"><p><xsl:apply-templates/></p></xsl:template>
  <xsl:template match="em"><em><xsl:apply-templates/></em></xsl:template>
  <xsl:template match="code"><pre><xsl:apply-templates/></pre></xsl:template>

  <!-- "section 1.2", "table 1". A reference that leads nowhere ends the run. -->
  <xsl:template match="ref">
    <xsl:variable name="target" select="key('target', @to)"/>
    <xsl:if test="not($target)">
      <xsl:message terminate="yes">Nothing has the id "<xsl:value-of select="@to"/>".</xsl:message>
    </xsl:if>
    <a href="#{@to}">
      <xsl:value-of select="concat(local-name($target), '&#160;')"/>
      <xsl:apply-templates select="$target" mode="number"/>
    </a>
  </xsl:template>

  <xsl:template match="note">
    <xsl:variable name="number" select="count(preceding::note) + 1"/>
    <sup id="mark-{$number}"><a href="#note-{$number}"><xsl:value-of select="$number"/></a></sup>
  </xsl:template>

  <xsl:template match="table">
    <table id="{@id}">
      <caption>
        <xsl:text>Table </xsl:text>
        <xsl:apply-templates select="." mode="number"/>
        <xsl:value-of select="concat('. ', caption)"/>
      </caption>
      <tr>
        <th>Last old day</th><th>First new day</th><th class="days">Days lost</th><th>Where</th>
      </tr>
      <xsl:for-each select="row">
        <tr>
          <td><xsl:value-of select="@date"/></td>
          <td><xsl:value-of select="@next"/></td>
          <td class="days"><xsl:value-of select="@days"/></td>
          <td><xsl:apply-templates/></td>
        </tr>
      </xsl:for-each>
    </table>
  </xsl:template>
</xsl:stylesheet>
