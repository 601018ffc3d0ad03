<?xml version="1.0" encoding="UTF-8"?>
<!-- An article as one html page: numbered sections, a table of contents, cross references by
     number, and the notes gathered at the end. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:import href="numbers.xsl"/>
  <xsl:output method="html" doctype-public="-//W3C//DTD HTML 4.01//EN"
      doctype-system="http://www.w3.org/TR/html4/strict.dtd"/>

  <xsl:template match="/article">
    <html lang="{@lang}">
      <head>
        <title><xsl:value-of select="title"/></title>
        <style>
          body { max-width: 40em; margin: 2em auto; font: 1.05em/1.5 Georgia, serif }
          table { border-collapse: collapse } td, th { padding: .2em .8em; text-align: left }
          pre { background: #f4f1ea; padding: .8em } .number { color: #888; margin-right: .5em }
        </style>
      </head>
      <body>
        <h1><xsl:value-of select="title"/></h1>
        <p class="subtitle"><em><xsl:value-of select="subtitle"/></em></p>
        <xsl:apply-templates select="abstract/p"/>
        <div class="contents">
          <h2>Contents</h2>
          <xsl:call-template name="contents"/>
        </div>
        <xsl:apply-templates select="section"/>
        <xsl:if test="//note">
          <h2>Notes</h2>
          <ol>
            <xsl:for-each select="//note">
              <li id="note-{position()}"><xsl:apply-templates/></li>
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

  <xsl:template match="ref">
    <xsl:variable name="to" select="@to"/>
    <a href="#{$to}">
      <xsl:text>section </xsl:text>
      <xsl:apply-templates select="//section[@id = $to]" mode="number"/>
    </a>
  </xsl:template>

  <xsl:template match="note">
    <xsl:variable name="number" select="count(preceding::note) + 1"/>
    <sup><a href="#note-{$number}"><xsl:value-of select="$number"/></a></sup>
  </xsl:template>

  <xsl:template match="table">
    <table>
      <tr><th>Last old day</th><th>First new day</th><th>Days lost</th><th>Where</th></tr>
      <xsl:for-each select="row">
        <tr>
          <td><xsl:value-of select="@date"/></td>
          <td><xsl:value-of select="@next"/></td>
          <td><xsl:value-of select="@days"/></td>
          <td><xsl:apply-templates/></td>
        </tr>
      </xsl:for-each>
    </table>
  </xsl:template>
</xsl:stylesheet>
